#include "platform/linux/instance/InstanceMessage.h"

#include <strings.h>

#include <array>

namespace join::platform {

namespace {

constexpr std::string_view greeting = "tavojoin 1";

} // namespace

bool isLaunchUrl(const std::string& text) {
    constexpr std::string_view scheme = "tavojoin:";
    return ::strncasecmp(text.c_str(), scheme.data(), scheme.size()) == 0;
}

std::string instanceMessageBytes(const InstanceMessage& message) {
    std::string bytes;
    for (const std::string& field :
         {std::string(greeting), message.url.value_or(""), message.activationToken})
        bytes.append(field).append(1, '\0');
    return bytes;
}

std::optional<InstanceMessage> parseInstanceMessage(std::string_view bytes) {
    if (bytes.size() > maximumInstanceMessageSize)
        return std::nullopt;
    std::array<std::string, 3> fields;
    for (std::string& field : fields) {
        const auto end = bytes.find('\0');
        if (end == std::string_view::npos)
            return std::nullopt;
        field = bytes.substr(0, end);
        bytes.remove_prefix(end + 1);
    }
    auto& [greeted, url, token] = fields;
    if (greeted != greeting || !bytes.empty() || (!url.empty() && !isLaunchUrl(url)))
        return std::nullopt;
    return InstanceMessage{.url = url.empty() ? std::nullopt : std::optional(url), .activationToken = token};
}

} // namespace join::platform
