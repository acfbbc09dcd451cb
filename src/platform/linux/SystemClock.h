#pragma once

#include "platform/Clock.h"

namespace join::platform {

/// The clock of the system.
class SystemClock : public Clock {
public:
    LocalTime localTime() override;
    void sleep(std::chrono::milliseconds duration) override;
};

} // namespace join::platform
