#pragma once

#include "platform/linux/files/Descriptor.h"

#include <chrono>
#include <csignal>

namespace join::platform {

/// What can end the work early: its time limit, and SIGTERM, SIGINT or SIGHUP. While this object lives, those
/// signals have no effect of their own, so that everything can be cleaned up. For a process with one thread.
class Interruption {
public:
    explicit Interruption(std::chrono::milliseconds allowed);
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    /// Throws Exception if the work must end.
    void check() const { awaitReadable(-1); }

    /// Waits until the descriptor can be read. Throws Exception if the work must end.
    void awaitReadable(int descriptor) const;

private:
    std::chrono::steady_clock::time_point end_;
    Descriptor signals_;
    sigset_t before_{};
};

} // namespace join::platform
