#pragma once

#include <chrono>
#include <cstdint>

namespace join {

/// How long Join waits before it tries again.
inline constexpr std::chrono::seconds pauseBetweenAttempts{3};

/// What a failed download of the agent image leads to.
struct DownloadRetry {
    bool givesUp = false;       ///< no further attempt: the user is told and the logs are sent
    bool usesWebServer = false; ///< from now on the image comes from the web server
};

/// The decision after that many failures in a row: seven attempts in all, from the fifth on at the web
/// server.
constexpr DownloadRetry downloadRetryAfter(std::int32_t failures) {
    constexpr std::int32_t attempts = 7;
    constexpr std::int32_t attemptsAtFirstSource = 4;
    if (failures >= attempts)
        return {.givesUp = true};
    return {.usesWebServer = failures >= attemptsAtFirstSource};
}

} // namespace join
