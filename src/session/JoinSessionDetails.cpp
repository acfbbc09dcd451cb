#include "session/JoinSessionDetails.h"

#include "base/Logging.h"
#include "base/ServiceSettings.h"
#include "platform/Bundles.h"
#include "platform/Exception.h"
#include "platform/Services.h"
#include "platform/Tasks.h"

#include <memory>
#include <mutex>

namespace join {

namespace {

constexpr std::size_t meetingKeyLength = 10;

std::mutex creationLock;
std::unique_ptr<JoinSessionDetails> joinInfo;

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

JoinSessionDetails* JoinSessionDetails::getInstance() {
    constexpr auto method = "+[JoinSessionDetails getInstance]";
    try {
        const std::scoped_lock lock(creationLock);
        if (!joinInfo) {
            joinInfo = std::make_unique<JoinSessionDetails>();
            log("%s : Update Info Object Allocated", method);
        }
        return joinInfo.get();
    } catch (const std::exception& exception) {
        logExceptionBanner(method, exception);
        return nullptr;
    }
}

void JoinSessionDetails::setDefaultValues() {
    constexpr auto method = "+[JoinSessionDetails setDefaultValues]";
    try {
        log("%s : Setting default values ...", method);
        session().setWebServerName(std::string(defaultWebServerHost));
        session().setIsCrashDetectorDownloadStarted(false);
        session().setIsCrashDetectorLaunched(false);
        session().setIsAwsAvailable(false);
        session().setIsCdnAvailable(false);
        session().setRetryCounter(0);
        session().setLocalTavoAppVersion("0");
        session().setLocalJoinAppVersion("0");
        session().setCrashDetectorAppVersion("0");
        session().setIsUpdateNeeded(true);
        log("%s : Default values are set", method);
    } catch (const std::exception& exception) {
        logExceptionBanner(method, exception);
    }
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

void JoinSessionDetails::forgetInstance() { joinInfo.reset(); }

JoinSessionDetails& session() {
    JoinSessionDetails* const instance = JoinSessionDetails::getInstance();
    if (!instance)
        throw platform::Exception("There is no session state");
    return *instance;
}

} // namespace join
