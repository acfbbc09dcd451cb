#pragma once

#include "platform/linux/files/Descriptor.h"
#include "platform/linux/instance/InstanceListener.h"
#include "platform/linux/instance/InstanceMessage.h"

#include <chrono>
#include <optional>

namespace join::platform {

/// Opens the user's private folder, mode 0700, in which the starts of the program meet, and makes it when it
/// is missing: "tavojoin" in $XDG_RUNTIME_DIR, or in /run/user/UID when that variable was lost on the way,
/// or else "tavojoin/run" in the user's cache. A folder that others can reach, or that is another user's, is
/// passed over. Throws Exception when there is none.
Descriptor openInstanceFolder();

/// Sees to it that one process of the program runs for each user. The first start holds a lock, which ends
/// with its process however that ends, and listens on a Unix socket beside it; a later one sends its message
/// there, a packet, and ends when it has been answered. Needs nothing but the system, so that a later start
/// can end before the program proper is loaded.
class SingleInstance {
public:
    /// The private folder of openInstanceFolder. The patience is that for a running program to answer.
    explicit SingleInstance(Descriptor folder, std::chrono::milliseconds patience = std::chrono::seconds(5));

    enum class Start {
        first,      ///< this is now the process that runs
        handedOver, ///< the one that runs has the message
        unanswered, ///< one runs and does not answer: it has been stopped, or hangs
    };

    /// Becomes the first, or hands the message to the first: a process that ends in the meantime is waited
    /// for. Throws std::exception when the folder takes no lock or no socket.
    Start start(const InstanceMessage& message);

    /// Hands the message to the process that runs, or is about to. False when none has answered in time.
    bool handOver(const InstanceMessage& message);

    /// The messages of later starts, which wait until it begins to take them. Only for the first.
    InstanceListener& messages() { return *listener_; }

    /// Gives up the first place. The messages that were taken and still wait are the caller's now.
    std::vector<InstanceMessage> resign();

private:
    enum class Answer { taken, nobodyThere, none };

    Start meet(const InstanceMessage& message, bool mayBeFirst);
    bool takePlace();
    Descriptor listeningSocket() const;
    Answer send(const std::string& bytes, std::chrono::steady_clock::time_point limit) const;

    Descriptor folder_;
    std::chrono::milliseconds patience_;
    Descriptor lock_;
    std::optional<InstanceListener> listener_;
};

} // namespace join::platform
