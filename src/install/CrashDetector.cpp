#include "app/AppDelegate.h"
#include "base/Locations.h"
#include "base/Logging.h"
#include "install/TavoDMGDownloader.h"
#include "platform/FileManager.h"
#include "platform/Services.h"
#include "platform/Tasks.h"
#include "session/JoinSessionDetails.h"
#include "session/ProcessSlots.h"
#include "ui/TavoJoinWindowHandler.h"

namespace join {

namespace {

constexpr auto launchMethod = "-[AppDelegate crashDetectorLaunch]";

void startCrashDetector(JoinSessionDetails& details) {
    platform::services().tasks->start({installedCrashDetector(), {}, slots().tavoMeetingNativeFolder});
    log("%s : Crash detector has been launched!", launchMethod);
    details.setIsCrashDetectorLaunched(true);
}

} // namespace

void AppDelegate::deleteOlderCrashDetector() {
    constexpr auto method = "-[AppDelegate deleteOlderCrashDetector]";
    reportingExceptions(method, [&] {
        if (!slots().tavoDirectoryManager->exists(installedCrashDetector()))
            return;
        slots().tavoDirectoryManager->remove(installedCrashDetector());
        log("%s : Crash Detector older version removed", method);
    });
}

void AppDelegate::downloadCrashDetector() {
    constexpr auto method = "-[AppDelegate downloadCrashDetector]";
    reportingExceptions(method, [&] {
        platform::FileManager& files = *slots().tavoDirectoryManager;
        if (files.exists(installedCrashDetector()) || !files.exists(installedAgent()))
            return;
        log("%s : CrashDetector is not available. Download crash detector Mount from tavoDmg file", method);
        slots().tavoDmgDownloader->startDownLoadingTavoMacDmg();
    });
}

void AppDelegate::crashDetectorLaunch() {
    try {
        if (!isTavoAppRunning())
            return;
        platform::FileManager& files = *slots().tavoDirectoryManager;
        JoinSessionDetails& details = session();
        slots().tavoJoinWindow->tavoJoinWindow().orderOut();
        if (!details.isCrashDetectorLaunched() && files.exists(installedCrashDetector())) {
            startCrashDetector(details);
        } else if (details.isCrashDetectorLaunched()) {
            log("%s : Crash Detector already launched for this session.", launchMethod);
        } else {
            log("%s : Crash detector is not availble", launchMethod);
            if (files.exists(crashDetectorImage())) {
                log("%s : Crash detector dmg is availble", launchMethod);
                slots().tavoDmgDownloader->mountingTavoMacDmg();
            } else if (!details.isCrashDetectorDownloadStarted()) {
                downloadCrashDetector();
            }
        }
        if (details.isCrashDetectorLaunched())
            terminate();
    } catch (const std::exception& exception) {
        log("Exception in %s : %@", launchMethod, exception.what());
        terminate();
    }
}

} // namespace join
