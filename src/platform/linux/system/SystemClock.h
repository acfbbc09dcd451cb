#pragma once

#include "platform/Clock.h"

namespace join::platform {

/// The clock of the system. Local time is that of the time zone as it is at the moment.
class SystemClock : public Clock {
public:
    LocalTime localTime() override;
    void sleep(std::chrono::milliseconds duration) override;
};

} // namespace join::platform
