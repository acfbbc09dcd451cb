#include "server/DownloadRetry.h"

#include "app/AppDelegate.h"
#include "base/Logging.h"
#include "install/TavoDMGDownloader.h"
#include "platform/Clock.h"
#include "platform/NotificationCenter.h"
#include "platform/Services.h"
#include "session/JoinSessionDetails.h"
#include "session/ProcessSlots.h"
#include "ui/TavoJoinWindowHandler.h"

#include <chrono>

namespace join {

using platform::services;

void AppDelegate::retryDownloading() {
    constexpr auto method = "-[AppDelegate retryDownloading]";
    constexpr std::chrono::seconds pause{3};
    reportingExceptions(method, [&] {
        JoinSessionDetails& details = session();
        details.setRetryCounter(details.retryCounter() + 1);
        const DownloadRetry retry = downloadRetryAfter(details.retryCounter());
        if (retry.givesUp) {
            slots().tavoJoinWindow->showProblem();
            services().notificationCenter->post("SendJoinLog", "Join App faild to download TavoMac.dmg");
            return;
        }
        if (retry.usesWebServer) {
            details.setIsAwsAvailable(false);
            details.setIsCdnAvailable(false);
        }
        log("%s : Retrying dmg download! COUNT : %d ", method, details.retryCounter());
        services().clock->sleep(pause);
        slots().tavoDmgDownloader->startDownLoadingTavoMacDmg();
    });
}

} // namespace join
