#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace join::platform {

/// A running timer. It stops when this object is destroyed.
class Timer {
public:
    virtual ~Timer() = default;
};

/// Timers of the main run loop. They also fire in nested loops, but not in the middle of an operation of the
/// logic. Main thread only.
class Timers {
public:
    virtual ~Timers() = default;

    /// Calls the action repeatedly, the first time after one interval, until the caller destroys the timer.
    virtual std::unique_ptr<Timer> repeating(std::chrono::milliseconds interval,
                                             std::function<void()> action) = 0;
};

} // namespace join::platform
