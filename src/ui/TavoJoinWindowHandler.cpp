#include "ui/TavoJoinWindowHandler.h"

#include "base/Logging.h"
#include "platform/Application.h"
#include "platform/Services.h"

namespace join {

using platform::services;

TavoJoinWindowHandler::TavoJoinWindowHandler() : WindowController("TavoJoinWindow") {}

platform::Window& TavoJoinWindowHandler::tavoJoinWindow() { return interface().window(); }

platform::Label& TavoJoinWindowHandler::infoLabel() { return interface().label("infoLabel"); }

platform::ProgressIndicator& TavoJoinWindowHandler::progress() {
    return interface().progressIndicator("progress");
}

void TavoJoinWindowHandler::windowDidLoad() {
    platform::Window& window = tavoJoinWindow();
    centreOnMainScreen(window);
    window.setLevel(platform::floatingWindowLevel);
    window.setShouldClose([this] { return windowShouldClose(); });
    window.setBackgroundColor(platform::white);
    progress().startAnimation();
    infoLabel().setStringValue(services().strings->localized("JOIN_PROGRESS"));
    window.setTitle(services().strings->localized("JOIN"));
    window.hideStandardButton(platform::StandardButton::zoom);
    window.hideStandardButton(platform::StandardButton::minimise);
}

void TavoJoinWindowHandler::showProgress() {
    if (!isProblemShown_)
        return;
    isProblemShown_ = false;
    progress().setHidden(false);
    progress().startAnimation();
    infoLabel().setStringValue(services().strings->localized("JOIN_PROGRESS"));
    tavoJoinWindow().display();
}

void TavoJoinWindowHandler::showProblem() {
    isProblemShown_ = true;
    infoLabel().setStringValue(services().strings->localized("PROBLEM_OCCURED"));
    progress().stopAnimation();
    progress().setHidden(true);
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
    logSessionEnd();
    services().application->terminate();
}

bool TavoJoinWindowHandler::windowShouldClose() {
    orderOut();
    progress().stopAnimation();
    log("%s : Terminating tavo join", "-[TavoJoinWindowHandler windowShouldClose:]");
    logSessionEnd();
    services().application->terminate();
    return true;
}

} // namespace join
