// A launch URL, as bytes from the command line or from another process.

#include "url/LaunchUrl.h"
#include "Target.h"
#include "base/Text.h"
#include "platform/Utf8.h"
#include "platform/linux/instance/InstanceMessage.h"

#include <algorithm>

namespace join::fuzz {

void tryOut(std::string_view input) {
    const std::string text = launchUrlText(input);
    const auto isControl = [](unsigned char byte) { return (byte < 0x20 && byte != '\t') || byte == 0x7F; };
    require(platform::isUtf8(text) && std::ranges::none_of(text, isControl));
    require(launchUrlText(text) == text);
    require(platform::isLaunchUrl(text) == platform::isLaunchUrl(std::string(input)));

    const LaunchUrl url = parseLaunchUrl(text);
    require(url.hasParameters == (text.find("//") != std::string::npos));
    std::string written = "tavojoin://";
    for (const auto& [name, value] : url.parameters) {
        require(liesIn(name, text) && liesIn(value, text) && liesIn(trimBlanks(value), value));
        require(name.find('=') == std::string_view::npos && value.find('=') == std::string_view::npos);
        written.append(name).append("=").append(value).append("&");
    }
    require(parseLaunchUrl(written).parameters == url.parameters);
}

} // namespace join::fuzz
