#include "core/AppDelegate.h"
#include "core/Logging.h"

namespace join {

void AppDelegate::sendJoinLogTask(const Text& comment) {
    log("%s : This version sends no logs : %@", "-[AppDelegate sendJoinLogTask:]", comment);
}

void AppDelegate::joinFeatureTrackTask(std::string_view milestone) {
    log("%s : This version runs no diagnostics : %@", "-[AppDelegate joinFeatureTrackTask:]", milestone);
}

} // namespace join
