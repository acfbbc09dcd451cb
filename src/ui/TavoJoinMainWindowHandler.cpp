#include "ui/TavoJoinMainWindowHandler.h"

#include "core/Logging.h"

namespace join {

TavoJoinMainWindowHandler::TavoJoinMainWindowHandler(TavoJoinWindowHandler& joinInfoWindow)
    : joinInfoWindow_(joinInfoWindow) {}

void TavoJoinMainWindowHandler::showWindow() {
    static_cast<void>(joinInfoWindow_);
    log("%s : This version has no window to type a key in", "-[TavoJoinMainWindowHandler showWindow:]");
}

void TavoJoinMainWindowHandler::showWindowAskingForValidKey() { showWindow(); }

} // namespace join
