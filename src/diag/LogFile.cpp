#include "diag/LogFile.h"

#include "base/Logging.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Services.h"
#include "platform/Timers.h"
#include "session/ProcessSlots.h"

#include <chrono>

namespace join {

namespace {

constexpr std::string_view currentLog = "join.log";
constexpr std::chrono::milliseconds tickInterval{100};

/// The generations are join0.log, the newest, to join10.log.
constexpr std::int32_t highestLogGeneration = 10;

std::string inLogFolder(std::string_view name) {
    return appendingPathComponent(slots().tavoJoinLogFolder, name);
}

std::string generation(std::int32_t number) { return inLogFolder(formatted("join%d.log", number)); }

} // namespace

void loggingFile() {
    reportingExceptions("-[AppDelegate loggingFile:]", [] {
        if (platform::services().log->redirectStandardStreams(inLogFolder(currentLog)) < logRotationSize)
            return;

        for (std::int32_t number = slots().logFileNameCount; number >= 0; --number) {
            if (files().exists(generation(number)))
                files().remove(generation(number));
            files().copy(number == 0 ? inLogFolder(currentLog) : generation(number - 1), generation(number));
        }
        if (slots().logFileNameCount != highestLogGeneration)
            ++slots().logFileNameCount;
        files().truncate(inLogFolder(currentLog));
    });
}

void startLoggingTimer() {
    reportingExceptions("-[AppDelegate startLoggingTimer]", [] {
        slots().loggingTimer = platform::services().timers->repeating(tickInterval, loggingFile);
    });
}

} // namespace join
