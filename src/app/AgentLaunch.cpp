#include "app/AppDelegate.h"
#include "base/Locations.h"
#include "base/Logging.h"
#include "install/JoinUtils.h"
#include "install/TavoDMGDownloader.h"
#include "platform/FileManager.h"
#include "platform/Services.h"
#include "platform/Workspace.h"
#include "session/ProcessSlots.h"
#include "ui/TavoJoinWindowHandler.h"

namespace join {

namespace {
constexpr std::string_view agentBundleIdentifier = "com.tavo.fendel.Tavo";
} // namespace

void AppDelegate::appLaunch() {
    constexpr auto method = "-[AppDelegate appLaunch]";
    reportingExceptions(method, [&] {
        log("%s : App Path : %@", method, runningFolder());
        slots().tavoDirectoryManager->createFolder(slots().tavoMeetingNativeFolder);
        if (slots().tavoDirectoryManager->exists(installedAgent())) {
            JoinUtils::workspaceLaunchApplication(installedAgent());
            log("%s : Tavo app file has been launched", method);
            joinFeatureTrackTask("Tavo app launched");
            if (slots().tavoJoinWindow->isVisible())
                slots().tavoJoinWindow->closeWindow();
            crashDetectorLaunch();
        } else {
            log("tavo dmg not yet installed");
            slots().tavoDmgDownloader->startDownLoadingTavoMacDmg();
            joinFeatureTrackTask("TavoMac dmg downloaded");
        }
    });
}

bool AppDelegate::isTavoAppRunning() {
    const auto running =
        platform::services().workspace->runningApplications(std::string(agentBundleIdentifier));
    return !running.empty() && running.front() == agentBundleIdentifier;
}

} // namespace join
