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

std::string logGeneration(std::int32_t number) { return formatted("join%d.log", number); }

} // namespace

std::vector<LogCopy> logRotation(std::int32_t highestGeneration) {
    std::vector<LogCopy> steps;
    for (std::int32_t i = highestGeneration; i >= 0; --i)
        steps.push_back({i == 0 ? std::string(currentLog) : logGeneration(i - 1), logGeneration(i)});
    return steps;
}

void loggingFile() {
    reportingExceptions("-[AppDelegate loggingFile:]", [] {
        const auto inLogFolder = [](std::string_view name) {
            return appendingPathComponent(slots().tavoJoinLogFolder, name);
        };
        if (platform::services().log->redirectStandardStreams(inLogFolder(currentLog)) < logRotationSize)
            return;

        for (const LogCopy& step : logRotation(slots().logFileNameCount)) {
            if (const std::string destination = inLogFolder(step.destination); files().exists(destination))
                files().remove(destination);
            files().copy(inLogFolder(step.source), inLogFolder(step.destination));
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
