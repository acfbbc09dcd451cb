#include "ui/TavoJoinWindowHandler.h"

#include "base/Logging.h"

namespace join {

TavoJoinWindowHandler::TavoJoinWindowHandler() : WindowController("TavoJoinWindow") {}

platform::ProgressIndicator& TavoJoinWindowHandler::progress() {
    return window().progressIndicator("progress");
}

platform::Label& TavoJoinWindowHandler::infoLabel() { return window().label("infoLabel"); }

void TavoJoinWindowHandler::windowDidLoad() {
    window().setLevel(platform::floatingWindowLevel);
    window().setCloseAction([this] { windowShouldClose(); });
    window().setWhite();
    window().setTitle(localized("JOIN"));
    showProgress();
}

void TavoJoinWindowHandler::showProgress() {
    if (isProgressShown_)
        return;
    isProgressShown_ = true;
    progress().startAnimation();
    infoLabel().setStringValue(localized("JOIN_PROGRESS"));
    window().display();
}

void TavoJoinWindowHandler::showInstallation() { infoLabel().setStringValue(localized("INSTALL_PROGRESS")); }

void TavoJoinWindowHandler::showProblem(const std::string& textKey) {
    infoLabel().setStringValue(localized(textKey));
    progress().stopAnimation();
    infoLabel().announce();
    isProgressShown_ = false;
}

void TavoJoinWindowHandler::closeWindow() {
    if (!isVisible())
        return;
    orderOut();
    log("%s : TavoJoinWindowHandler.closeWindow() called!", "-[TavoJoinWindowHandler closeWindow]");
}

void TavoJoinWindowHandler::close() {
    orderOut();
    log("%s : Agent invoked successfully", "-[TavoJoinWindowHandler close]");
    quit();
}

void TavoJoinWindowHandler::windowShouldClose() {
    orderOut();
    progress().stopAnimation();
    log("%s : Terminating tavo join", "-[TavoJoinWindowHandler windowShouldClose:]");
    quit();
}

} // namespace join
