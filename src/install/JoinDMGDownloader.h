#pragma once

namespace join {

/// Fetches the Join app's own disk image and reinstalls the Join app. Main thread.
class JoinDMGDownloader {
public:
    void startDownLoadingJoinMacDmg();
};

} // namespace join
