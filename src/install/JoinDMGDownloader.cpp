#include "install/JoinDMGDownloader.h"

#include "base/Locations.h"
#include "base/Logging.h"
#include "platform/FileManager.h"
#include "platform/NotificationCenter.h"
#include "platform/Services.h"
#include "session/JoinSessionDetails.h"
#include "session/ProcessSlots.h"

namespace join {

namespace {

constexpr DiskImage joinDiskImage = {
    .fileName = "JoinMac.dmg",
    .mountPoint = "/Volumes/TavoJoin",
    .urlLine = "-[JoinDMGDownloader startDownLoadingJoinMacDmg]_block_invoke : Join Dmg Url : %@",
    .systemNameLine = "system version details %@",
    .systemVersionLine = "system version : %@",
    .notCreatedLine = "joinMac.dmg  download failed",
    .busyLine = "-[JoinDMGDownloader startDownLoadingJoinMacDmg] : JoinMac.dmg is being downloaded already",
    .beganLine = "-[JoinDMGDownloader downloadDidBegin:] : JoinMac.dmg downloadDidstarted",
    .failedLine =
        "-[JoinDMGDownloader download:didFailWithError:] : JoinMac.dmg Download failed! Error - %@ %@ ",
    .finishedLine = "-[JoinDMGDownloader downloadDidFinish:] : JoinMac.dmg downloadDidFinish",
    .mountedLine = "-[JoinDMGDownloader mountingJoinMacDmg] : JoinMac.dmg mount task termination status : %d",
    .detachedLine =
        "-[JoinDMGDownloader unMountingTavoJoinDmg] : JoinMac.dmg unmount task termination status : %d",
    .detachExceptionLine = "Exception in -[JoinDMGDownloader unMountingTavoJoinDmg] : %@",
};

} // namespace

JoinDMGDownloader::JoinDMGDownloader(TavoJoinWindowHandler& joinInfoWindow)
    : DiskImageDownloader(joinDiskImage, joinInfoWindow) {}

void JoinDMGDownloader::startDownLoadingJoinMacDmg() { startDownloading(); }

std::string JoinDMGDownloader::url() const {
    const JoinSessionDetails& details = session();
    return formatted("https://%@/join-session?key=%@&role=agent&email=%@", details.webServerName(),
                     details.key(), details.emailID());
}

void JoinDMGDownloader::downloadFailed(const platform::HttpError& /*error*/) {
    if (slots().joinDownloadFailures++ == 0)
        platform::services().notificationCenter->post("SendJoinLog",
                                                      "Join App faild to download JoinMac.dmg");
}

void JoinDMGDownloader::downloadFinished() {
    reportingExceptions("-[JoinDMGDownloader mountingJoinMacDmg]", [this] {
        mount();
        copyAppFile();
    });
}

void JoinDMGDownloader::copyAppFile() {
    constexpr auto method = "-[JoinDMGDownloader copyAppFile]";
    files().createFolder(supportFolder());
    if (files().exists(homeApplicationsFolder()) &&
        files().installFromVolume(onVolume("Join.app"), homeJoinCopy()))
        log("%s : Join.app file copied to user application folder", method);
    if (files().installFromVolume(onVolume("Join.app"), systemJoinCopy()))
        log("%s : Join.app file copied to application folder", method);
    detach();
    files().remove(imagePath());
    platform::services().notificationCenter->post("LaunchTavoApp", "JoinDMGDownloader");
}

} // namespace join
