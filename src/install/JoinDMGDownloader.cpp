#include "install/JoinDMGDownloader.h"

#include "core/Logging.h"

namespace join {

void JoinDMGDownloader::startDownLoadingJoinMacDmg() {
    log("%s : This version installs nothing: JoinMac.dmg is not downloaded",
        "-[JoinDMGDownloader startDownLoadingJoinMacDmg]");
}

} // namespace join
