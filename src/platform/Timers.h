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

/// Timers of the main run loop. They fire in nested loops too. Main thread only.
class Timers {
public:
    virtual ~Timers() = default;

    /// Calls the action again and again, the first time after one interval; owned by the caller.
    virtual std::unique_ptr<Timer> repeating(std::chrono::milliseconds interval,
                                             std::function<void()> action) = 0;
};

} // namespace join::platform
