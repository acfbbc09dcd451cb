#pragma once

#include "install/DiskImageDownloader.h"

namespace join {

class TavoJoinWindowHandler;

/// Fetches the disk image of the agent and the Crash Detector, and installs what is missing of the two.
class TavoDMGDownloader final : public DiskImageDownloader {
public:
    /// The progress window says what has failed for good; it outlives this object.
    explicit TavoDMGDownloader(TavoJoinWindowHandler& joinInfoWindow);

    void startDownLoadingTavoMacDmg();

    /// Mounts the image and copies what is missing. With both programs there, detaches it and posts
    /// "Terminate"; with no agent even so, the progress window says that there is a problem.
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
    void unMountingTavoMacDmg();
    void deleteImageWhenInstalled();

    TavoJoinWindowHandler& joinInfoWindow_;
};

} // namespace join
