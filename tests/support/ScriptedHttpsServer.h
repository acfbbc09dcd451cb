#pragma once

#include "service/Certificate.h"

#include <gtest/gtest.h>
#include <openssl/ssl.h>

#include <arpa/inet.h>
#include <array>
#include <csignal>
#include <map>
#include <mutex>
#include <netinet/in.h>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace join::test {

enum class Fault {
    none,
    cutBody,        ///< announces the body and ends the connection half-way
    endUnannounced, ///< sends the body without an announced length and closes the connection in order
    cutUnannounced, ///< sends half of it, without an announced length; the end of TLS is missing
    stallBody,      ///< announces the body, sends half of it and then nothing more
    reset,          ///< resets the connection instead of answering
    silence,        ///< never answers
    endless,        ///< sends the body again and again, without an announced length
};

struct ScriptedAnswer {
    int status = 200;
    std::string body = {};
    std::vector<std::string> headers = {}; ///< "Name: value"
    Fault fault = Fault::none;
    std::size_t repeat = 1; ///< how often the body comes in one answer; not with a fault
};

/// An HTTPS server on loopback that answers the expected requests, each once. A request that was not
/// expected, or that never came, fails the test. Connections are kept alive. It is also a proxy, at whose
/// other end it is itself, whatever host was asked for.
class ScriptedHttpsServer {
public:
    ScriptedHttpsServer()
        : context_(SSL_CTX_new(TLS_server_method()), SSL_CTX_free),
          listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)), stop_(::eventfd(0, EFD_CLOEXEC)) {
        std::signal(SIGPIPE, SIG_IGN); // OpenSSL writes to connections that the client has closed
        SSL_CTX_use_certificate(context_.get(), certificate_.certificate());
        SSL_CTX_use_PrivateKey(context_.get(), certificate_.key());
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        if (::bind(listener_, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
            ::listen(listener_, 16) != 0)
            ADD_FAILURE() << "no loopback";
        ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
        port_ = ntohs(address.sin_port);
        acceptor_ = std::jthread([this] { acceptAll(); });
    }

    ~ScriptedHttpsServer() {
        ::eventfd_write(stop_, 1);
        acceptor_.join();
        connections_.clear(); // waits for them
        for (const auto& [request, answer] : expected_)
            ADD_FAILURE() << "never asked for: " << request;
        ::close(listener_);
        ::close(stop_);
    }

    ScriptedHttpsServer(const ScriptedHttpsServer&) = delete;
    ScriptedHttpsServer& operator=(const ScriptedHttpsServer&) = delete;

    std::string url(const std::string& path, const std::string& host = "localhost") const {
        return "https://" + host + ":" + std::to_string(port_) + path;
    }
    std::string certificate() const { return certificate_.pem(); }

    /// Answers the next request for that path, which may have a query.
    void expect(const std::string& path, ScriptedAnswer answer, const std::string& method = "GET") {
        const std::scoped_lock lock(mutex_);
        expected_.emplace(method + " " + path, std::move(answer));
    }

    /// The requests, in order: each its header lines, an empty line and the body.
    std::vector<std::string> requests() const {
        const std::scoped_lock lock(mutex_);
        return requests_;
    }
    /// What a client says in clear to have a tunnel, in order. From now on the answer has that status.
    std::vector<std::string> tunnels() const {
        const std::scoped_lock lock(mutex_);
        return tunnels_;
    }
    void answerTunnels(const std::string& status) {
        const std::scoped_lock lock(mutex_);
        tunnelStatus_ = status;
    }
    std::string proxyUrl(const std::string& user) const {
        return "http://" + user + "@localhost:" + std::to_string(port_);
    }
    std::size_t connectionCount() const {
        const std::scoped_lock lock(mutex_);
        return connections_.size();
    }

private:
    using Tls = std::unique_ptr<SSL, void (*)(SSL*)>;

    /// Waits until there is something to read; false if the server ends first.
    bool awaitInput(int descriptor) const {
        std::array<pollfd, 2> waiting{{{descriptor, POLLIN, 0}, {stop_, POLLIN, 0}}};
        while (::poll(waiting.data(), waiting.size(), -1) < 0) {
        } // interrupted by a signal; seteuid sends one to every thread
        return waiting[1].revents == 0;
    }

    void acceptAll() {
        while (awaitInput(listener_)) {
            const int socket = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
            const std::scoped_lock lock(mutex_);
            connections_.emplace_back([this, socket] {
                serve(socket);
                ::close(socket);
            });
        }
    }

    void serve(int socket) {
        const Tls tls(SSL_new(context_.get()), SSL_free);
        SSL_set_fd(tls.get(), socket);
        if (!awaitInput(socket) || !openTunnel(socket) || SSL_accept(tls.get()) != 1)
            return;
        for (std::string request = read(tls.get()); !request.empty(); request = read(tls.get()))
            if (!answer(tls.get(), socket, take(std::move(request))))
                return;
    }

    /// Returns whether the connection may begin: it is direct, or a tunnel that is granted.
    bool openTunnel(int socket) {
        constexpr std::string_view request = "CONNECT ";
        std::string head(request.size(), '\0');
        if (::recv(socket, head.data(), head.size(), MSG_PEEK | MSG_WAITALL) < 0 || head != request)
            return true;
        head.clear();
        for (char byte = 0; !head.ends_with("\r\n\r\n") && ::recv(socket, &byte, 1, 0) == 1;)
            head += byte;
        const std::scoped_lock lock(mutex_);
        tunnels_.push_back(head);
        const std::string reply = "HTTP/1.1 " + tunnelStatus_ + " Scripted\r\nContent-Length: 0\r\n\r\n";
        return ::write(socket, reply.data(), reply.size()) > 0 && tunnelStatus_ == "200";
    }

    /// The length of the request that begins so; the largest number while its header is incomplete.
    static std::size_t lengthOf(const std::string& request) {
        constexpr std::string_view length = "\r\nContent-Length: ";
        const auto end = request.find("\r\n\r\n");
        const auto at = request.find(length);
        if (end == std::string::npos)
            return end;
        return end + 4 + (at < end ? std::stoul(request.substr(at + length.size(), 12)) : 0);
    }

    /// Returns one request, empty if there is none.
    std::string read(SSL* tls) const {
        std::string request;
        std::array<char, 4096> buffer{};
        for (auto length = lengthOf(request); request.size() < length;) {
            if (SSL_pending(tls) == 0 && !awaitInput(SSL_get_fd(tls)))
                return {};
            const int count = SSL_read(tls, buffer.data(), static_cast<int>(buffer.size()));
            if (count <= 0)
                return {};
            request.append(buffer.data(), static_cast<std::size_t>(count));
            if (length == std::string::npos)
                length = lengthOf(request);
        }
        return request;
    }

    ScriptedAnswer take(std::string request) {
        const std::scoped_lock lock(mutex_);
        const std::string& head = requests_.emplace_back(std::move(request));
        for (auto next = expected_.begin(); next != expected_.end(); ++next)
            if (head.starts_with(next->first + " HTTP/1.1\r\n"))
                return std::move(expected_.extract(next).mapped());
        ADD_FAILURE() << "unexpected request: " << head;
        return {.status = 500};
    }

    /// Returns whether the connection goes on.
    bool answer(SSL* tls, int socket, const ScriptedAnswer& answer) const {
        if (answer.fault == Fault::reset) {
            const linger atOnce{.l_onoff = 1, .l_linger = 0};
            ::setsockopt(socket, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
            return false;
        }
        if (answer.fault == Fault::silence)
            return awaitInput(socket); // the client gives up and closes
        std::string head = "HTTP/1.1 " + std::to_string(answer.status) + " Scripted\r\n";
        for (const std::string& header : answer.headers)
            head += header + "\r\n";
        if (hasAnnouncedLength(answer.fault))
            head += "Content-Length: " + std::to_string(answer.body.size() * answer.repeat) + "\r\n";
        return send(tls, head + "\r\n") && sendBody(tls, socket, answer);
    }

    static bool hasAnnouncedLength(Fault fault) {
        return fault != Fault::endless && fault != Fault::endUnannounced && fault != Fault::cutUnannounced;
    }

    bool sendBody(SSL* tls, int socket, const ScriptedAnswer& answer) const {
        if (answer.fault == Fault::none || answer.fault == Fault::endless) {
            for (std::size_t i = 0; answer.fault == Fault::endless || i < answer.repeat; ++i)
                if (!send(tls, answer.body))
                    return false;
            return true;
        }
        if (answer.fault == Fault::endUnannounced && send(tls, answer.body))
            SSL_shutdown(tls);
        else if (send(tls, std::string_view(answer.body).substr(0, answer.body.size() / 2)) &&
                 answer.fault == Fault::stallBody)
            awaitInput(socket); // the client gives up and closes
        return false;
    }

    static bool send(SSL* tls, std::string_view bytes) {
        return bytes.empty() || SSL_write(tls, bytes.data(), static_cast<int>(bytes.size())) > 0;
    }

    tools::Certificate certificate_{"test"};
    std::unique_ptr<SSL_CTX, void (*)(SSL_CTX*)> context_;
    int listener_;
    int stop_;
    int port_ = 0;
    mutable std::mutex mutex_;
    std::multimap<std::string, ScriptedAnswer> expected_;
    std::vector<std::string> requests_;
    std::vector<std::string> tunnels_;
    std::string tunnelStatus_ = "200";
    std::jthread acceptor_;
    std::vector<std::jthread> connections_;
};

} // namespace join::test
