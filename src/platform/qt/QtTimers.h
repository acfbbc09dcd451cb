#pragma once

#include "platform/Timers.h"

namespace join::platform {

/// Timers on Qt's event loop.
class QtTimers final : public Timers {
public:
    std::unique_ptr<Timer> repeating(std::chrono::milliseconds interval,
                                     std::function<void()> action) override;
};

} // namespace join::platform
