#include "platform/linux/instance/InstanceListener.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace join::platform {

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

/// A start that connects and then sends nothing has been stopped.
constexpr auto patience = 5s;
constexpr std::size_t maximumConnections = 256;

} // namespace

bool isOwnPeer(int socket) {
    ucred peer{};
    socklen_t size = sizeof peer;
    return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == ::geteuid();
}

struct InstanceListener::Connection {
    Descriptor socket;
    Clock::time_point limit;
    bool isReady = false;
};

InstanceListener::InstanceListener(Descriptor socket)
    : socket_(std::move(socket)), buffer_(maximumInstanceMessageSize + 1) {}

InstanceListener::~InstanceListener() { close(); }

void InstanceListener::begin() {
    thread_ = std::thread([this] { serve(); });
}

void InstanceListener::setNotification(std::function<void()> notify) {
    const std::scoped_lock lock(mutex_);
    notify_ = std::move(notify);
    for (std::size_t i = 0; i < waiting_.size(); ++i)
        notify_();
}

std::optional<InstanceMessage> InstanceListener::next() {
    const std::scoped_lock lock(mutex_);
    if (waiting_.empty())
        return std::nullopt;
    InstanceMessage message = std::move(waiting_.front());
    waiting_.erase(waiting_.begin());
    return message;
}

std::vector<InstanceMessage> InstanceListener::close() {
    std::vector<InstanceMessage> left;
    {
        const std::scoped_lock lock(mutex_);
        closed_ = true;
        left.swap(waiting_);
    }
    if (thread_.joinable()) {
        ::shutdown(socket_.get(), SHUT_RDWR); // wakes the thread
        thread_.join();
    }
    socket_.close();
    return left;
}

void InstanceListener::serve() {
    std::vector<Connection> connections;
    for (;;) {
        const bool isFull = connections.size() >= maximumConnections;
        std::vector<pollfd> polled = {{socket_.get(), static_cast<short>(isFull ? 0 : POLLIN), 0}};
        for (const Connection& connection : connections)
            polled.push_back({connection.socket.get(), POLLIN, 0});
        const int timeout =
            connections.empty() ? -1 : static_cast<int>(std::chrono::milliseconds(1s).count());
        if (::poll(polled.data(), polled.size(), timeout) < 0 && errno != EINTR)
            return;
        if ((polled.front().revents & POLLHUP) != 0)
            return;
        for (std::size_t i = 0; i < connections.size(); ++i)
            connections[i].isReady = polled[i + 1].revents != 0;
        std::erase_if(connections, [this](Connection& connection) {
            if (connection.isReady)
                answer(connection.socket);
            return connection.isReady || Clock::now() > connection.limit;
        });
        acceptAll(connections);
    }
}

void InstanceListener::acceptAll(std::vector<Connection>& connections) {
    while (connections.size() < maximumConnections) {
        Descriptor socket(::accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (socket && isOwnPeer(socket.get()))
            connections.push_back({std::move(socket), Clock::now() + patience});
        else if (!socket && errno == EAGAIN)
            return;
        else if (!socket && errno != EINTR && errno != ECONNABORTED) {
            std::this_thread::sleep_for(10ms); // out of descriptors for now, and poll would not wait
            return;
        }
    }
}

/// A message that cannot be answered is not accepted, and one that is not accepted gets no answer.
void InstanceListener::answer(const Descriptor& sender) {
    const ssize_t size = ::recv(sender.get(), buffer_.data(), buffer_.size(), 0);
    if (size <= 0)
        return;
    auto message = parseInstanceMessage({buffer_.data(), static_cast<std::size_t>(size)});
    const std::scoped_lock lock(mutex_);
    if (!message || closed_ ||
        ::send(sender.get(), instanceReply.data(), instanceReply.size(), MSG_NOSIGNAL) < 0)
        return;
    waiting_.push_back(std::move(*message));
    if (notify_)
        notify_();
}

} // namespace join::platform
