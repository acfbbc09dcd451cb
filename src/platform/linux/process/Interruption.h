#pragma once

#include "platform/linux/files/Descriptor.h"

#include <chrono>
#include <csignal>

namespace join::platform {

/// What can end the work early: the time that it may take, and SIGTERM, SIGINT or SIGHUP. As long as this
/// lives those signals do nothing by themselves, so that all that was begun is cleared up. For a process with
/// one thread.
class Interruption {
public:
    explicit Interruption(std::chrono::milliseconds allowed);
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    /// Throws Exception when the work is to end.
    void check() const { wait(-1); }

    /// Waits until the descriptor can be read. Throws Exception when the work is to end.
    void awaitReadable(int descriptor) const;

private:
    bool wait(int descriptor) const;

    std::chrono::steady_clock::time_point end_;
    Descriptor signals_;
    sigset_t before_{};
};

} // namespace join::platform
