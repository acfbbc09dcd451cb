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

/// Says to a second start that the running program has its message.
inline constexpr std::string_view instanceReply = "taken";

/// Whether the process at the other end of a Unix socket belongs to the same user.
bool isOwnPeer(int socket);

/// Takes the messages of further starts on a thread of its own: the socket queues by itself, but a start ends
/// only when it has been told that its URL is taken, and the main thread may wait a minute for a server. What
/// is no message, or comes from another user's process, is dropped without an answer, and so is the message
/// of a start that has given up waiting: it has told its user that nobody answered.
class InstanceListener {
public:
    /// The socket listens: those who connect wait until messages are taken.
    explicit InstanceListener(Descriptor socket);
    ~InstanceListener();
    InstanceListener(const InstanceListener&) = delete;
    InstanceListener& operator=(const InstanceListener&) = delete;

    /// From now on messages are taken. Called once. Throws std::system_error when there can be no thread.
    void begin();

    /// Has the function called once for each message, those that wait already included. It is called on any
    /// thread, and must not call back. Set once.
    void setNotification(std::function<void()> notify);

    /// The message that has waited longest; nothing when none waits.
    std::optional<InstanceMessage> next();

    /// Takes no more messages, and gives those that were taken and still wait. Whoever is turned away now
    /// has not been answered.
    std::vector<InstanceMessage> close();

private:
    struct Connection;

    void serve();
    void acceptAll(std::vector<Connection>& connections);
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
