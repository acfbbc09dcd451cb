#pragma once

#include "platform/linux/files/Descriptor.h"
#include "platform/linux/instance/InstanceMessage.h"

#include <functional>
#include <mutex>
#include <optional>
#include <string_view>
#include <thread>
#include <vector>

namespace join::platform {

/// Tells a second start that the running program has received its message.
inline constexpr std::string_view instanceReply = "taken";

/// Returns whether the process at the other end of a Unix socket belongs to the same user.
bool isOwnPeer(int socket);

/// Receives the messages of later starts on a thread of its own: the socket queues them by itself, but a
/// start ends only when it has been told that its URL is taken, and the main thread may be waiting a minute
/// for a server. Anything that is not a message, or comes from another user's process, is dropped without an
/// answer. So is the message of a start that has given up waiting: it has told its user that nobody answered.
class InstanceListener {
public:
    /// The socket must be listening: clients wait until messages are accepted.
    explicit InstanceListener(Descriptor socket);
    ~InstanceListener();
    InstanceListener(const InstanceListener&) = delete;
    InstanceListener& operator=(const InstanceListener&) = delete;

    /// Starts accepting messages. Call it once. Throws std::system_error if no thread can be created.
    void begin();

    /// Sets a function to call once for each message, including those already waiting. It may be called on
    /// any thread, and must not call back. Call this once.
    void setNotification(std::function<void()> notify);

    /// Returns the message that has waited longest, or nothing if there is none.
    std::optional<InstanceMessage> next();

    /// Stops accepting messages, and returns those that were accepted and are still waiting. Later starts
    /// that are turned away from now on get no answer.
    std::vector<InstanceMessage> close();

private:
    void serve();
    void answer(const Descriptor& sender);

    Descriptor socket_;
    std::vector<char> buffer_;
    std::mutex mutex_;
    std::vector<InstanceMessage> waiting_;
    std::function<void()> notify_;
    bool closed_ = false;
    std::thread thread_;
};

} // namespace join::platform
