#include "diag/DiagnosticTasks.h"

#include "base/Logging.h"
#include "diag/LogUpload.h"
#include "platform/Services.h"
#include "platform/Tasks.h"
#include "platform/Utf8.h"

#include <vector>

namespace join {

namespace {

constexpr const char* defaultComment = "Join App failed to start agent - ";

/// Returns what the network-location tool prints, or an absent text if that is not UTF-8.
Text networkLocations(std::vector<std::string> arguments) {
    const platform::TaskResult result =
        platform::services().tasks->run({"/usr/sbin/scselect", std::move(arguments), "/"});
    return platform::isUtf8(result.output) ? Text(result.output) : std::nullopt;
}

} // namespace

void sendJoinLogTask(LogUpload& upload, const Text& comment) {
    reportingExceptions("-[AppDelegate sendJoinLogTask:]", [&](std::string_view method) {
        const bool saysSomething = isFilled(comment) && *comment != absentText;
        const std::string flag = upload.sendLogFiles(saysSomething ? *comment : defaultComment);
        log("%s : SendlogTask output \n%@", "-[AppDelegate sendJoinLogTask:]_block_invoke",
            networkLocations({flag}));
        log("%s : Log file has been sent succesfully !!! ", method);
    });
}

void joinFeatureTrackTask() {
    reportingExceptions("-[AppDelegate joinFeatureTrackTask:]", [&](std::string_view method) {
        log("%s : joinFeaturelogTask output \n%@", "-[AppDelegate joinFeatureTrackTask:]_block_invoke",
            networkLocations({}));
        log("%s : joinFeaturelogTask called succesfully !!! ", method);
    });
}

} // namespace join
