#include "install/InstalledPrograms.h"

#include "base/Locations.h"
#include "base/Logging.h"
#include "diag/EmbeddedPropertyList.h"
#include "diag/MonitoringHandler.h"
#include "platform/Bundles.h"
#include "platform/Exception.h"
#include "platform/FileManager.h"
#include "platform/Services.h"
#include "platform/Tasks.h"
#include "platform/Workspace.h"
#include "session/ProcessSlots.h"

namespace join {

using platform::services;

namespace {

Text shortVersion(const std::optional<platform::Value>& list) {
    const platform::Value* version = list ? list->member("CFBundleShortVersionString") : nullptr;
    return version ? Text(platform::describe(*version)) : std::nullopt;
}

bool isWholeBundle(const std::string& path) {
    if (!files().exists(path)) // usual, and an exception takes long
        return false;
    try {
        services().bundles->mainExecutable(path);
        return true;
    } catch (const platform::Exception&) {
        return false;
    }
}

bool isWholeFile(const std::string& path) {
    const auto file = files().open(path);
    return !file || file->size() > 0;
}

} // namespace

void removeDamagedPrograms() {
    constexpr auto method = "-[AppDelegate awakeFromNib]";
    for (const std::string& path :
         {systemJoinCopy(), homeJoinCopy(), installedAgent(), installedCrashDetector()}) {
        const bool isWhole = path == installedCrashDetector() ? isWholeFile(path) : isWholeBundle(path);
        if (!isWhole && files().remove(path))
            log("%s : %@ was damaged and has been removed", method, path);
    }
}

Text installedVersion(const std::string& bundle) {
    if (!files().exists(bundle))
        return std::nullopt;
    return shortVersion(services().bundles->infoDictionary(bundle)).value_or(std::string(absentText));
}

Text crashDetectorVersion() { return shortVersion(embeddedPlistV2(installedCrashDetector())); }

void deleteOlderCrashDetector() {
    constexpr auto method = "-[AppDelegate deleteOlderCrashDetector]";
    reportingExceptions(method, [&] {
        if (!files().exists(installedCrashDetector()))
            return;
        files().remove(installedCrashDetector());
        log("%s : Crash Detector older version removed", method);
    });
}

void startCrashDetector() {
    services().tasks->start({installedCrashDetector(), {}, slots().tavoMeetingNativeFolder});
}

bool workspaceLaunchApplication(const std::string& bundlePath) {
    constexpr auto method = "+[JoinUtils workspaceLaunchApplication:]";
    try {
        MonitoringHandler::addkey("M4",
                                  formatted("Agent launched time : %@", MonitoringHandler::currentTime()));
        const std::vector<std::string> arguments = {"-timestamps", MonitoringHandler::getJsonString()};
        platform::services().workspace->launchApplication(bundlePath, arguments);
        log("%s : LaunchApplication: %@ launched successfully with args : %@", method,
            lastPathComponent(bundlePath), formatted("(%@, %@)", arguments[0], arguments[1]));
        return true;
    } catch (const std::exception& exception) {
        log(" Exception in PingServer.launchApplicationWith() : %@", exception.what());
        return false;
    }
}

bool isTavoAppRunning() { return !services().workspace->runningApplications("com.tavo.fendel.Tavo").empty(); }

void removeOutdatedAgent() {
    files().remove(installedAgent());
    files().remove(agentImage());
}

} // namespace join
