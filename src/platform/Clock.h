#pragma once

#include <chrono>

namespace join::platform {

/// A local date and time of day.
struct LocalTime {
    int year = 0;
    int month = 0; ///< 1 to 12
    int day = 0;   ///< 1 to 31
    int hour = 0;  ///< 0 to 23
    int minute = 0;
    int second = 0;
    int millisecond = 0;
};

/// Tells the time and sleeps. Any thread.
class Clock {
public:
    virtual ~Clock() = default;

    /// Returns the current time in the user's time zone.
    virtual LocalTime localTime() = 0;

    /// Blocks the calling thread.
    virtual void sleep(std::chrono::milliseconds duration) = 0;
};

} // namespace join::platform
