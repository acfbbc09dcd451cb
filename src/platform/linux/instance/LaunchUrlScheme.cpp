#include "platform/linux/instance/LaunchUrlScheme.h"

#include <strings.h>

#include <string_view>

namespace join::platform {

bool isLaunchUrl(const std::string& text) {
    constexpr std::string_view scheme = "tavojoin:";
    return ::strncasecmp(text.c_str(), scheme.data(), scheme.size()) == 0;
}

} // namespace join::platform
