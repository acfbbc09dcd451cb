#include "platform/linux/instance/InstanceListener.h"

#include <cerrno>
#include <chrono>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>
#include <utility>

namespace join::platform {

namespace {

/// A start sends its message as soon as it is connected; one that does not has been stopped, and would hold up
/// the others. If it was only slow, it connects again.
constexpr timeval patience{.tv_sec = 0, .tv_usec = 500'000};

} // namespace

bool isOwnPeer(int socket) {
    ucred peer{};
    socklen_t size = sizeof peer;
    return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == ::geteuid();
}

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
    for (;;) {
        const Descriptor sender(::accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC));
        if (sender && isOwnPeer(sender.get()))
            answer(sender);
        else if (!sender && errno == EINVAL) // the socket has been shut down
            return;
        else if (!sender)
            std::this_thread::sleep_for(std::chrono::milliseconds(10)); // perhaps out of descriptors for now
    }
}

/// A message that cannot be answered is not accepted, and one that is not accepted gets no answer.
void InstanceListener::answer(const Descriptor& sender) {
    ::setsockopt(sender.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
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
