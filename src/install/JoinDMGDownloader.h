#pragma once

#include "install/DiskImageDownloader.h"

namespace join {

/// Downloads the Join app's own disk image and reinstalls the Join app. The running one continues.
class JoinDMGDownloader final : public DiskImageDownloader {
public:
    explicit JoinDMGDownloader(TavoJoinWindowHandler& joinInfoWindow);

    void startDownLoadingJoinMacDmg();

private:
    std::string url() const override;
    void downloadFailed(const platform::HttpError& error) override;
    void downloadFinished() override;

    void copyAppFile();
};

} // namespace join
