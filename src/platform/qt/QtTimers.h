#pragma once

#include "platform/Timers.h"

namespace join::platform {

class QtMainQueue;

/// Timers on Qt's event loop.
class QtTimers final : public Timers {
public:
    /// A timer skips its turn while the queue is held. The queue must outlive the timers.
    explicit QtTimers(const QtMainQueue& mainQueue) : mainQueue_(mainQueue) {}

    std::unique_ptr<Timer> repeating(std::chrono::milliseconds interval,
                                     std::function<void()> action) override;

private:
    const QtMainQueue& mainQueue_;
};

} // namespace join::platform
