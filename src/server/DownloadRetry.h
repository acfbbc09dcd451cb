#pragma once

#include <chrono>
#include <cstdint>

namespace join {

/// How long Join waits before it tries again.
inline constexpr std::chrono::seconds pauseBetweenAttempts{3};

/// What to do after a failed download of the agent image.
struct DownloadRetry {
    bool givesUp = false;       ///< no further attempt: tell the user and send the logs
    bool usesWebServer = false; ///< from now on, download the image from the web server
};

/// Returns the decision after that many failures in a row. There are seven attempts in all, from the fifth on
/// from the web server.
constexpr DownloadRetry downloadRetryAfter(std::int32_t failures) {
    constexpr std::int32_t attempts = 7;
    constexpr std::int32_t attemptsAtFirstSource = 4;
    if (failures >= attempts)
        return {.givesUp = true};
    return {.usesWebServer = failures >= attemptsAtFirstSource};
}

} // namespace join
