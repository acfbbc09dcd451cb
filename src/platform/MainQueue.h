#pragma once

#include <functional>

namespace join::platform {

/// Work for the main thread.
class MainQueue {
public:
    virtual ~MainQueue() = default;

    /// Runs the work once, on a later turn of the main run loop, in the order of the calls. Any thread.
    virtual void enqueue(std::function<void()> work) = 0;
};

} // namespace join::platform
