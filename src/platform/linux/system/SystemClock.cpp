#include "platform/linux/system/SystemClock.h"

#include <algorithm>
#include <cerrno>
#include <ctime>

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

void SystemClock::sleep(std::chrono::milliseconds duration) {
    const auto milliseconds = std::max<std::chrono::milliseconds::rep>(duration.count(), 0);
    timespec rest{milliseconds / 1000, milliseconds % 1000 * 1'000'000};
    while (::nanosleep(&rest, &rest) != 0 && errno == EINTR) {
    }
}

} // namespace join::platform
