#include "session/ProcessSlots.h"

#include "diag/LogFile.h"
#include "diag/LogUpload.h"
#include "diag/MonitoringHandler.h"
#include "install/JoinDMGDownloader.h"
#include "install/TavoDMGDownloader.h"
#include "platform/Timers.h"
#include "server/ApiHandler.h"
#include "session/JoinSessionDetails.h"
#include "ui/ErrorWindow.h"
#include "ui/TavoJoinMainWindowHandler.h"
#include "ui/TavoJoinWindowHandler.h"

namespace join {

ProcessSlots::ProcessSlots() = default;
ProcessSlots::~ProcessSlots() = default;
ProcessSlots::ProcessSlots(ProcessSlots&&) noexcept = default;
ProcessSlots& ProcessSlots::operator=(ProcessSlots&&) noexcept = default;

ProcessSlots& slots() {
    static ProcessSlots instance;
    return instance;
}

void emptyProcessSlots() {
    slots() = ProcessSlots();
    JoinSessionDetails::forgetInstance();
    ApiHandler::forgetInstance();
    MonitoringHandler::forgetEntries();
    logFileNameCount = 0;
    logUpload() = LogUploadSlots();
    copyCounter = 0;
    joinDownloadFailures = 0;
}

} // namespace join
