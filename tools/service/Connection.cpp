#include "service/Connection.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>

namespace join::tools {
namespace {

constexpr std::size_t pieceSize = std::size_t{64} << 10U;

const std::string& block() {
    static const std::string bytes(pieceSize, 'a');
    return bytes;
}

bool hasGone(int socket) {
    pollfd client{.fd = socket, .events = POLLRDHUP, .revents = 0};
    return ::poll(&client, 1, 0) != 0;
}

} // namespace

Connection& Connection::current() {
    thread_local Connection connection;
    return connection;
}

void Connection::follow(SSL_CTX& context) {
    SSL_CTX_set_info_callback(&context, [](const SSL* connection, int where, int) {
        if ((where & SSL_CB_HANDSHAKE_START) != 0)
            current() = {.socket = SSL_get_fd(connection)};
    });
}

void Connection::close() {
    ::shutdown(socket, SHUT_RDWR);
    closed = true;
}

void waitUntilTheClientGoes(StopSignal& stop) {
    while (!hasGone(Connection::current().socket) && !stop.wait(std::chrono::milliseconds(50)))
        ;
}

bool sendBytes(httplib::DataSink& sink, const char* bytes, std::size_t size) {
    if (!sink.write(bytes, size))
        return false;
    Connection::current().streamedBytes += size;
    return true;
}

void sendCut(httplib::Response& response, const std::string& contentType, const std::string& text) {
    response.set_content_provider(text.size(), contentType,
                                  [text](std::size_t, std::size_t, httplib::DataSink& sink) {
                                      sendBytes(sink, text.data(), text.size() / 2);
                                      return false;
                                  });
}

void sendHuge(httplib::Response& response, const std::string& contentType, std::size_t size) {
    response.set_content_provider(
        size, contentType, [](std::size_t, std::size_t length, httplib::DataSink& sink) {
            return sendBytes(sink, block().data(), std::min(length, block().size()));
        });
}

void sendEndless(httplib::Response& response, const std::string& contentType) {
    response.set_chunked_content_provider(contentType, [](std::size_t, httplib::DataSink& sink) {
        return sendBytes(sink, block().data(), block().size());
    });
}

} // namespace join::tools
