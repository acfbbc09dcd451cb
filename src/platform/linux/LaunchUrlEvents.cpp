#include "platform/linux/LaunchUrlEvents.h"

#include <strings.h>

#include <string_view>
#include <utility>

namespace join::platform {

void LaunchUrlEvents::setDefaultHandler(const std::string& /*scheme*/,
                                        const std::string& /*bundleIdentifier*/) {}

void LaunchUrlEvents::setEventHandler(std::function<void(const std::string& url)> handler) {
    handler_ = std::move(handler);
}

void LaunchUrlEvents::deliver(const std::string& url) {
    if (handler_)
        handler_(url);
}

bool isLaunchUrl(const std::string& argument) {
    constexpr std::string_view scheme = "tavojoin:";
    return ::strncasecmp(argument.c_str(), scheme.data(), scheme.size()) == 0;
}

} // namespace join::platform
