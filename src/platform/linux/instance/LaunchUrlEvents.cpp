#include "platform/linux/instance/LaunchUrlEvents.h"

#include <utility>

namespace join::platform {

LaunchUrlEvents::LaunchUrlEvents(Registration registration) : registration_(std::move(registration)) {}

void LaunchUrlEvents::setDefaultHandler(const std::string& scheme, const std::string& bundleIdentifier) {
    registration_(scheme, bundleIdentifier);
}

void LaunchUrlEvents::setEventHandler(std::function<void(const std::string& url)> handler) {
    handler_ = std::move(handler);
}

void LaunchUrlEvents::deliver(const std::string& url) {
    if (handler_)
        handler_(url);
}

} // namespace join::platform
