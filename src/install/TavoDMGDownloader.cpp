#include "install/TavoDMGDownloader.h"

#include "base/Locations.h"
#include "base/Logging.h"
#include "diag/MonitoringHandler.h"
#include "install/InstalledPrograms.h"
#include "platform/FileManager.h"
#include "platform/NotificationCenter.h"
#include "platform/Services.h"
#include "session/JoinSessionDetails.h"
#include "session/ProcessSlots.h"
#include "ui/TavoJoinWindowHandler.h"

namespace join {

namespace {

constexpr DiskImage agentDiskImage = {
    .fileName = "TavoMac.dmg",
    .mountPoint = "/Volumes/Tavo",
    .urlLine = "-[TavoDMGDownloader startDownLoadingTavoMacDmg]_block_invoke : Tavo Dmg Url : %@",
    .systemNameLine =
        "-[TavoDMGDownloader startDownLoadingTavoMacDmg]_block_invoke : System version details %@",
    .systemVersionLine = "-[TavoDMGDownloader startDownLoadingTavoMacDmg]_block_invoke : System version : %@",
    .notCreatedLine = "-[TavoDMGDownloader startDownLoadingTavoMacDmg]_block_invoke : Download failed",
    .busyLine = "-[TavoDMGDownloader startDownLoadingTavoMacDmg] : TavoMac.dmg is being downloaded already",
    .beganLine = "-[TavoDMGDownloader downloadDidBegin:] : downloadDidstarted",
    .failedLine = "-[TavoDMGDownloader download:didFailWithError:] : Download failed! Error - %@ %@ ",
    .finishedLine = "-[TavoDMGDownloader downloadDidFinish:] : downloadDidFinish",
    .mountedLine = "-[TavoDMGDownloader mountingTavoMacDmg] : dmg mount task termination status : %d",
    .detachedLine = "-[TavoDMGDownloader unMountingTavoMacDmg] : Dmg unmount task termination status : %d",
    .detachExceptionLine = "-[TavoDMGDownloader unMountingTavoMacDmg] : Exception in "
                           "TavoDMGDownloader.unmountingTavoMacDmg() : %@",
};

constexpr int copyAttempts = 3;

void post(std::string_view name, const Text& object = std::nullopt) {
    platform::services().notificationCenter->post(name, object);
}

} // namespace

TavoDMGDownloader::TavoDMGDownloader(TavoJoinWindowHandler& joinInfoWindow)
    : DiskImageDownloader(agentDiskImage, joinInfoWindow) {}

void TavoDMGDownloader::startDownLoadingTavoMacDmg() { startDownloading(); }

std::string TavoDMGDownloader::url() const {
    const JoinSessionDetails& details = session();
    return details.isCdnAvailable() ? formatted("https://%@/TavoMac.dmg", details.cdnUrl())
                                    : formatted("https://%@/agent/TavoMac.dmg", details.webServerName());
}

void TavoDMGDownloader::downloadFailed(const platform::HttpError& error) {
    log("%s : Download failed! Whole Error - %@", "-[TavoDMGDownloader download:didFailWithError:]",
        formatted("%@ (%@)", error.description, error.failingUrl));
    post("RetryDMGDownloadig", "TavoDMGDownloader");
}

void TavoDMGDownloader::downloadFinished() {
    const Text server = session().isCdnAvailable() ? Text("CDN") : session().webServerName();
    MonitoringHandler::addkey("M3", formatted("Agent downloaded time : %@ | Server : %@",
                                              MonitoringHandler::currentTime(), server));
    mountingTavoMacDmg();
    session().retryCounter.set(0);
}

void TavoDMGDownloader::mountingTavoMacDmg() {
    reportingExceptions("-[TavoDMGDownloader mountingTavoMacDmg]", [this] {
        mount();
        installWhatIsMissing();
    });
    if (files().exists(installedAgent()))
        return;
    // The volume takes up space on a disk that may have been too small for the agent.
    if (files().exists(onVolume("")))
        detach();
    joinInfoWindow_.showProblem();
}

void TavoDMGDownloader::installWhatIsMissing() {
    if (!files().exists(installedAgent())) {
        copyAppFileAndLaunch();
        if (files().exists(installedCrashDetector()))
            detachAndTerminate();
    }
    if (!files().exists(installedCrashDetector())) {
        copyCrashDetectorFile();
        if (files().exists(installedAgent()))
            detachAndTerminate();
    }
}

void TavoDMGDownloader::detachAndTerminate() {
    detach();
    post("Terminate");
}

void TavoDMGDownloader::copyAppFileAndLaunch() {
    for (int attempt = 0; attempt < copyAttempts; ++attempt)
        if (copyAndLaunchOnce())
            return;
    joinInfoWindow_.showProblem();
}

/// Returns false if the agent is neither started nor installed, and must be copied again.
bool TavoDMGDownloader::copyAndLaunchOnce() {
    constexpr auto method = "-[TavoDMGDownloader copyAppFileAndLaunch]";
    ++slots().copyCounter;
    files().createFolder(supportFolder());
    if (files().installFromVolume(onVolume("Tavo.app"), installedAgent()))
        log("%s : Tavo.app file copied", method);
    if (workspaceLaunchApplication(installedAgent())) {
        log("%s : App Path : %@ tavo app file launched!", method, installedAgent());
        deleteImageWhenInstalled();
        return true;
    }
    log("%s : TavoDMGDownloader copyAppFileAndLaunch is failed!", method);
    if (files().exists(installedAgent())) {
        session().launchApplicationWith(installedAgent(), supportFolder());
        return true;
    }
    if (slots().copyCounter == 1)
        post("SendJoinLog", "Tavo.app Copy file Failed");
    return false;
}

void TavoDMGDownloader::copyCrashDetectorFile() {
    files().createFolder(supportFolder());
    if (files().installFromVolume(onVolume("TavoCrashDetector"), installedCrashDetector()))
        log("%s : TavoCrashDetector file copied", "-[TavoDMGDownloader copyCrashDetectorFile]");
    deleteImageWhenInstalled();
}

void TavoDMGDownloader::deleteImageWhenInstalled() {
    if (files().exists(installedAgent()) && files().exists(installedCrashDetector()))
        files().remove(imagePath());
}

} // namespace join
