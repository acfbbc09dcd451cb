#include "install/TavoDMGDownloader.h"

#include "core/Logging.h"

namespace join {

void TavoDMGDownloader::startDownLoadingTavoMacDmg() {
    log("%s : This version installs nothing: TavoMac.dmg is not downloaded",
        "-[TavoDMGDownloader startDownLoadingTavoMacDmg]");
}

void TavoDMGDownloader::mountingTavoMacDmg() {
    log("%s : This version installs nothing: TavoMac.dmg is not mounted",
        "-[TavoDMGDownloader mountingTavoMacDmg]");
}

} // namespace join
