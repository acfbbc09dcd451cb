#include "platform/linux/system/SystemClock.h"

#include <ctime>
#include <thread>

namespace join::platform {

LocalTime SystemClock::localTime() {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    ::tzset(); // localtime_r keeps the first zone it has seen; the user's may have changed
    ::localtime_r(&now.tv_sec, &local);
    return {.year = local.tm_year + 1900,
            .month = local.tm_mon + 1,
            .day = local.tm_mday,
            .hour = local.tm_hour,
            .minute = local.tm_min,
            .second = local.tm_sec,
            .millisecond = static_cast<int>(now.tv_nsec / 1'000'000)};
}

void SystemClock::sleep(std::chrono::milliseconds duration) { std::this_thread::sleep_for(duration); }

} // namespace join::platform
