#include "app/AppDelegate.h"
#include "base/Locations.h"
#include "base/Logging.h"
#include "diag/MonitoringHandler.h"
#include "install/JoinDMGDownloader.h"
#include "install/TavoDMGDownloader.h"
#include "platform/Bundles.h"
#include "platform/FileManager.h"
#include "platform/Services.h"
#include "platform/Value.h"
#include "server/ApiHandler.h"
#include "session/JoinSessionDetails.h"
#include "session/ProcessSlots.h"

namespace join {

using platform::services;

namespace {

/// The short version string of an information property list, absent when it has none.
Text shortVersion(const std::optional<platform::Value>& list) {
    const platform::Value* version = list ? list->member("CFBundleShortVersionString") : nullptr;
    return version ? Text(platform::describe(*version)) : std::nullopt;
}

/// The version of an application bundle as text: "(null)" when it has none.
std::string bundleVersion(const std::string& path) {
    return shortVersion(services().bundles->infoDictionary(path)).value_or(std::string(absentText));
}

} // namespace

void AppDelegate::joinAppVersionCheck() {
    constexpr auto method = "-[AppDelegate joinAppVersionCheck]";
    reportingExceptions(method, [&] {
        platform::FileManager& files = *slots().tavoDirectoryManager;
        if (!files.exists(systemJoinCopy())) {
            log("%s : Join.app file not found in Applications folder - starting JoinMac.dmg download",
                method);
            slots().joinDmgDownloader->startDownLoadingJoinMacDmg();
            return;
        }
        JoinSessionDetails& details = session();
        const std::string localVersion = bundleVersion(systemJoinCopy());
        if (!details.joinAppVersion())
            details.setJoinAppVersion(localVersion);
        log("%s : Local Join App version : %@ Latest Join App version : %@", method, localVersion,
            details.joinAppVersion());
        if (details.joinAppVersion() == localVersion) {
            if (slots().launchApp) {
                versionCheckChain();
                log("%s : This mac has latest join app", method);
            }
            return;
        }
        files.remove(systemJoinCopy());
        if (files.exists(homeJoinCopy()))
            files.remove(homeJoinCopy());
        slots().joinDmgDownloader->startDownLoadingJoinMacDmg();
        log("%s : Downloading latest Join.app", method);
    });
}

void AppDelegate::versionCheckChain() {
    if (isCrashDetectorUpdateNeeded())
        deleteOlderCrashDetector();
    downloadCrashDetector();
    tavoAppVersionCheck();
}

bool AppDelegate::isCrashDetectorUpdateNeeded() {
    constexpr auto method = "-[AppDelegate isCrashDetectorUpdateNeeded]";
    bool isNeeded = false;
    reportingExceptions(method, [&] {
        if (!slots().tavoDirectoryManager->exists(installedCrashDetector()))
            return;
        JoinSessionDetails& details = session();
        const Text localVersion = shortVersion(embeddedPlistV2(installedCrashDetector()));
        log("%s : Local Crash Detector App version : %@ Latest Crash Detector App version : %@", method,
            localVersion, details.crashDetectorAppVersion());
        if (!details.crashDetectorAppVersion())
            details.setCrashDetectorAppVersion(localVersion);
        isNeeded = !localVersion || localVersion != details.crashDetectorAppVersion();
    });
    return isNeeded;
}

void AppDelegate::tavoAppVersionCheck() {
    constexpr auto method = "-[AppDelegate tavoAppVersionCheck]";
    reportingExceptions(method, [&] {
        platform::FileManager& files = *slots().tavoDirectoryManager;
        JoinSessionDetails& details = session();
        if (details.sessionType() == SessionType::remoteSupport)
            details.setJoinType(JoinType::remoteSupport);
        else if (details.sessionType() == SessionType::meeting)
            details.setJoinType(JoinType::meeting);

        if (files.exists(installedAgent())) {
            const std::string localVersion = bundleVersion(installedAgent());
            details.setLocalTavoAppVersion(localVersion);
            if (!details.tavoAppVersion())
                details.setTavoAppVersion(localVersion);
            log("%s : Local Tavo App version : %@ Latest Tavo App version : %@", method, localVersion,
                details.tavoAppVersion());
        } else {
            log("%s : Tavo app not found, Setting app version to zero ( default)", method);
            details.setLocalTavoAppVersion("0");
        }

        modifyJoinDetails();
        if (ApiHandler* api = ApiHandler::getInstance())
            api->checkSessionApi();
        MonitoringHandler::addkey("M2",
                                  formatted("Session Validated : %@", MonitoringHandler::currentTime()));

        if (!details.isUpdateNeeded()) {
            log("%s : This mac has latest Tavo App", method);
            appLaunch();
            return;
        }
        for (const std::string& outdated : {installedAgent(), agentImage()})
            if (files.exists(outdated))
                files.remove(outdated);
        joinFeatureTrackTask("Latest TavoMac.dmg downloaded and Tavo app launched");
        slots().tavoDmgDownloader->startDownLoadingTavoMacDmg();
    });
}

} // namespace join
