#pragma once

namespace join {

/// Fetches the disk image of the agent and the Crash Detector, and installs what is missing of the two. Main
/// thread.
class TavoDMGDownloader {
public:
    void startDownLoadingTavoMacDmg();
    void mountingTavoMacDmg();
};

} // namespace join
