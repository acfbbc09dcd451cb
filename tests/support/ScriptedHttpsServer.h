#pragma once

#include "service/Certificate.h"

#include <gtest/gtest.h>
#include <openssl/ssl.h>

#include <array>
#include <csignal>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace join::test {

/// What follows an answer. Without a fault its length is announced, and the next request is awaited.
enum class Fault {
    none,
    end,     ///< the connection is closed in order
    cut,     ///< it is closed without the end of TLS
    stall,   ///< nothing, until the client closes it
    endless, ///< the same body again and again
};

struct ScriptedAnswer {
    int status = 200;
    std::string body = {};
    std::vector<std::string> headers = {}; ///< "Name: value"
    Fault fault = Fault::none;
};

/// An HTTPS server on loopback that answers the expected requests, each once. Any other, and one that never
/// comes, fails the test. The client, which alone closes connections, must be gone before the server. It is also
/// a proxy, at whose other end it is itself, whatever host was asked for.
class ScriptedHttpsServer {
public:
    ScriptedHttpsServer()
        : context_(SSL_CTX_new(TLS_server_method()), SSL_CTX_free),
          listener_(BIO_new_accept("127.0.0.1:0"), BIO_free) {
        std::signal(SIGPIPE, SIG_IGN); // OpenSSL writes to connections that the client has closed
        SSL_CTX_use_certificate(context_.get(), certificate_.certificate());
        SSL_CTX_use_PrivateKey(context_.get(), certificate_.key());
        if (BIO_do_accept(listener_.get()) != 1) // the first time it only listens
            ADD_FAILURE() << "no loopback";
        acceptor_ = std::jthread([this] { acceptAll(); });
    }

    ~ScriptedHttpsServer() {
        ::shutdown(static_cast<int>(BIO_get_fd(listener_.get(), nullptr)), SHUT_RD);
        acceptor_.join();
        connections_.clear(); // waits for them
        for (const auto& [request, answer] : expected_)
            ADD_FAILURE() << "never asked for: " << request;
    }

    std::string url(const std::string& path, const std::string& host = "localhost") const {
        return "https://" + host + ":" + BIO_get_accept_port(listener_.get()) + path;
    }
    std::string certificate() const { return certificate_.pem(); }

    /// Answers the next request for that path, which may have a query. With the method CONNECT it is a host and
    /// a port, and the answer says in clear whether there is a tunnel.
    void expect(const std::string& path, ScriptedAnswer answer, const std::string& method = "GET") {
        const std::scoped_lock lock(mutex_);
        expected_.emplace(method + " " + path, std::move(answer));
    }

    /// The requests since the last call, in order: each its header lines, an empty line and the body.
    std::vector<std::string> takeRequests() {
        const std::scoped_lock lock(mutex_);
        return std::exchange(requests_, {});
    }
    std::size_t connectionCount() const {
        const std::scoped_lock lock(mutex_);
        return connections_.size();
    }

private:
    void acceptAll() {
        while (BIO_do_accept(listener_.get()) == 1) {
            const std::scoped_lock lock(mutex_);
            connections_.emplace_back([this, accepted = BIO_pop(listener_.get())] { serve(accepted); });
        }
    }

    void serve(BIO* accepted) {
        const std::unique_ptr<SSL, void (*)(SSL*)> tls(SSL_new(context_.get()), SSL_free);
        SSL_set_bio(tls.get(), accepted, accepted);
        if (!openTunnel(SSL_get_fd(tls.get())) || SSL_accept(tls.get()) != 1)
            return;
        for (std::string request = read(tls.get()); !request.empty(); request = read(tls.get()))
            if (!send(tls.get(), take(request)))
                return;
    }

    /// Returns whether the connection may begin: it is direct, or a tunnel that is granted.
    bool openTunnel(int socket) {
        std::array<char, 4096> buffer{};
        if (::recv(socket, buffer.data(), 1, MSG_PEEK) != 1 || buffer[0] != 'C')
            return true; // TLS begins in another way
        const auto count = ::recv(socket, buffer.data(), buffer.size(), 0);
        const ScriptedAnswer answer = take({buffer.data(), static_cast<std::size_t>(count)});
        const std::string head = headOf(answer);
        return ::write(socket, head.data(), head.size()) > 0 && answer.status == 200;
    }

    /// Returns one request, empty if there is none.
    static std::string read(SSL* tls) {
        constexpr std::string_view length = "\r\nContent-Length: ";
        std::string request;
        std::array<char, 16384> buffer{};
        for (auto whole = std::string::npos; request.size() < whole;) {
            const int count = SSL_read(tls, buffer.data(), static_cast<int>(buffer.size()));
            if (count <= 0)
                return {};
            request.append(buffer.data(), static_cast<std::size_t>(count));
            const auto end = request.find("\r\n\r\n");
            const auto at = request.find(length);
            if (end != std::string::npos)
                whole = end + 4 + (at < end ? std::stoul(request.substr(at + length.size(), 12)) : 0);
        }
        return request;
    }

    ScriptedAnswer take(const std::string& request) {
        const std::scoped_lock lock(mutex_);
        requests_.push_back(request);
        if (const auto next = expected_.extract(request.substr(0, request.find(" HTTP/1.1\r\n"))))
            return next.mapped();
        ADD_FAILURE() << "unexpected request: " << request;
        return {.status = 500};
    }

    static std::string headOf(const ScriptedAnswer& answer) {
        std::string head = "HTTP/1.1 " + std::to_string(answer.status) + " Scripted\r\n";
        for (const std::string& header : answer.headers)
            head += header + "\r\n";
        if (answer.fault == Fault::none)
            head += "Content-Length: " + std::to_string(answer.body.size()) + "\r\n";
        return head + "\r\n";
    }

    /// Returns whether the connection goes on.
    static bool send(SSL* tls, const ScriptedAnswer& answer) {
        std::string bytes = headOf(answer) + answer.body;
        while (SSL_write(tls, bytes.data(), static_cast<int>(bytes.size())) > 0 &&
               answer.fault == Fault::endless)
            bytes = answer.body;
        if (answer.fault == Fault::end)
            SSL_shutdown(tls);
        if (answer.fault == Fault::stall)
            read(tls);
        return answer.fault == Fault::none;
    }

    tools::Certificate certificate_{"test"};
    std::unique_ptr<SSL_CTX, void (*)(SSL_CTX*)> context_;
    std::unique_ptr<BIO, int (*)(BIO*)> listener_;
    mutable std::mutex mutex_;
    std::multimap<std::string, ScriptedAnswer> expected_;
    std::vector<std::string> requests_;
    std::jthread acceptor_;
    std::vector<std::jthread> connections_;
};

} // namespace join::test
