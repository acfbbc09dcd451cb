#include "session/JoinSessionDetails.h"

#include "base/Logging.h"
#include "base/ServiceSettings.h"
#include "platform/Bundles.h"
#include "platform/Services.h"
#include "platform/Tasks.h"

namespace join {

namespace {

constexpr std::size_t meetingKeyLength = 10;

} // namespace

std::optional<std::int32_t> sessionTypeForKey(std::string_view key) {
    switch (characterCount(key, meetingKeyLength)) {
    case meetingKeyLength:
        return SessionType::meeting;
    case meetingKeyLength - 1:
        return SessionType::remoteSupport;
    default:
        return std::nullopt;
    }
}

void JoinSessionDetails::setDefaultValues() {
    constexpr auto method = "+[JoinSessionDetails setDefaultValues]";
    try {
        log("%s : Setting default values ...", method);
        session().webServerName.set(std::string(defaultWebServerHost));
        session().isCrashDetectorDownloadStarted.set(false);
        session().isCrashDetectorLaunched.set(false);
        session().isAwsAvailable.set(false);
        session().isCdnAvailable.set(false);
        session().retryCounter.set(0);
        session().localTavoAppVersion.set("0");
        session().localJoinAppVersion.set("0");
        session().crashDetectorAppVersion.set("0");
        session().isUpdateNeeded.set(true);
        log("%s : Default values are set", method);
    } catch (const std::exception& exception) {
        logExceptionBanner(method, exception);
    }
}

void JoinSessionDetails::setJoinTypeOf(JoinRun run) {
    if (sessionType() == SessionType::remoteSupport)
        joinType.set(run == JoinRun::first ? JoinType::firstRemoteSupport : JoinType::remoteSupport);
    else if (sessionType() == SessionType::meeting)
        joinType.set(run == JoinRun::first ? JoinType::firstMeeting : JoinType::meeting);
}

void JoinSessionDetails::nameGuest() {
    if (const Text known = emailID(); !isFilled(known) || *known == absentText)
        emailID.set("Guest");
}

void JoinSessionDetails::launchApplicationWith(const std::string& bundlePath, const std::string& directory) {
    constexpr auto method = "-[JoinSessionDetails launchApplicationWith:Directory:]";
    try {
        const std::string executable = platform::services().bundles->mainExecutable(bundlePath);
        platform::services().tasks->start({executable, {}, directory});
        log("%s : %@ launched successfully from location : %@", method, lastPathComponent(bundlePath),
            directory);
    } catch (const std::exception& exception) {
        logExceptionBanner(method, exception);
    }
}

} // namespace join
