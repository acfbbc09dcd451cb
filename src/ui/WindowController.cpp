#include "ui/WindowController.h"

#include "base/Logging.h"
#include "platform/Application.h"
#include "platform/Services.h"

#include <utility>

namespace join {

using platform::services;

WindowController::WindowController(std::string windowNibName) : windowNibName_(std::move(windowNibName)) {}

WindowController::~WindowController() = default;

void WindowController::showWindow() { window().makeKeyAndOrderFront(); }

void WindowController::orderOut() {
    if (window_)
        window_->orderOut();
}

bool WindowController::isVisible() const { return window_ && window_->isVisible(); }

platform::Window& WindowController::window() {
    if (!window_) {
        window_ = services().windows->load(windowNibName_);
        windowDidLoad();
    }
    return *window_;
}

void WindowController::quit() {
    logSessionEnd();
    services().application->terminate();
}

std::string localized(const std::string& key) { return services().strings->localized(key); }

} // namespace join
