#pragma once

#include "platform/Clock.h"

namespace join::platform {

/// The system's clock. Local time uses the current time zone.
class SystemClock : public Clock {
public:
    LocalTime localTime() override;
    void sleep(std::chrono::milliseconds duration) override;
};

} // namespace join::platform
