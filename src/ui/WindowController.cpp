#include "ui/WindowController.h"

#include "platform/Services.h"

#include <utility>

namespace join {

WindowController::WindowController(std::string windowNibName) : windowNibName_(std::move(windowNibName)) {}

WindowController::~WindowController() = default;

void WindowController::showWindow() { interface().window().makeKeyAndOrderFront(); }

bool WindowController::isVisible() const { return interface_ && interface_->window().isVisible(); }

platform::Interface& WindowController::interface() {
    if (!interface_) {
        interface_ = platform::services().windows->load(windowNibName_);
        windowDidLoad();
    }
    return *interface_;
}

void WindowController::orderOut() {
    if (interface_)
        interface_->window().orderOut();
}

void centreOnMainScreen(platform::Window& window) {
    const platform::Size screen = platform::services().windows->mainScreenSize();
    const platform::Size size = window.frameSize();
    window.setFrameOrigin({screen.width / 2 - size.width / 2, screen.height / 2 - size.height / 2});
    window.display();
}

} // namespace join
