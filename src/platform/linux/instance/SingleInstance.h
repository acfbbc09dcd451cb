#pragma once

#include "platform/linux/files/Descriptor.h"
#include "platform/linux/instance/InstanceListener.h"
#include "platform/linux/instance/InstanceMessage.h"

#include <chrono>
#include <optional>

namespace join::platform {

/// Opens the user's private folder, mode 0700, in which the starts of the program meet, creating it if it is
/// missing: "tavojoin" in $XDG_RUNTIME_DIR, or in /run/user/UID if that variable was lost on the way, or else
/// "tavojoin/run" in the user's cache. Skips a folder that others can access or that belongs to another user.
/// Throws Exception if there is no usable one.
Descriptor openInstanceFolder();

/// Ensures that each user runs only one process of the program. The first start holds a lock, which is
/// released however its process ends, and listens on a Unix socket beside it. A later start sends its message
/// there, as one packet, and ends when it has been answered. Depends only on the system, so that a later
/// start can end before the main program is loaded.
class SingleInstance {
public:
    /// Takes the private folder of openInstanceFolder, and how long to wait for a running program's answer.
    explicit SingleInstance(Descriptor folder, std::chrono::milliseconds patience = std::chrono::seconds(5));

    enum class Start {
        first,      ///< this process is now the running one
        handedOver, ///< the running process has the message
        unanswered, ///< the running process does not answer: it has been stopped, or hangs
    };

    /// Becomes the first, or hands the message to the first. Waits for a process that is just ending. Throws
    /// std::exception if no lock or no socket can be made in the folder.
    Start start(const InstanceMessage& message);

    /// Hands the message to the process that is running, or about to run. Returns false if none has answered
    /// in time.
    bool handOver(const InstanceMessage& message);

    /// Returns the messages of later starts, which wait until it begins to accept them. Only for the first.
    InstanceListener& messages() { return *listener_; }

    /// Gives up the first place. Returns the messages that were accepted and are still waiting.
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
