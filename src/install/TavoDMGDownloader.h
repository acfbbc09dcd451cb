#pragma once

#include "install/DiskImageDownloader.h"

namespace join {

/// Downloads the disk image of the agent and the Crash Detector, and installs whichever of them is missing.
class TavoDMGDownloader final : public DiskImageDownloader {
public:
    /// The progress window reports final failures; it must outlive this object.
    explicit TavoDMGDownloader(TavoJoinWindowHandler& joinInfoWindow);

    void startDownLoadingTavoMacDmg();

    /// Mounts the image and copies what is missing. If both programs are then installed, detaches it and
    /// posts "Terminate"; if the agent is still missing, shows the problem in the progress window.
    void mountingTavoMacDmg();

private:
    std::string url() const override;
    void downloadFailed(const platform::HttpError& error) override;
    void downloadFinished() override;

    void installWhatIsMissing();
    void detachAndTerminate();
    void copyAppFileAndLaunch();
    bool copyAndLaunchOnce();
    void copyCrashDetectorFile();
    void deleteImageWhenInstalled();
};

} // namespace join
