#include "platform/linux/instance/InstanceMessage.h"

#include "platform/linux/instance/LaunchUrlScheme.h"

namespace join::platform {

namespace {

constexpr std::string_view greeting = "tavojoin 1";

/// Takes the text before the next NUL off the front; nothing when there is none.
std::optional<std::string_view> takeField(std::string_view& bytes) {
    const auto end = bytes.find('\0');
    if (end == std::string_view::npos)
        return std::nullopt;
    const std::string_view field = bytes.substr(0, end);
    bytes.remove_prefix(end + 1);
    return field;
}

} // namespace

std::optional<std::string> instanceMessageBytes(const InstanceMessage& message) {
    const std::string_view url = message.url ? std::string_view(*message.url) : std::string_view();
    std::string bytes;
    for (const std::string_view field : {greeting, url, std::string_view(message.activationToken)})
        bytes.append(field).push_back('\0');
    if (bytes.size() > maximumInstanceMessageSize)
        return std::nullopt;
    return bytes;
}

std::optional<InstanceMessage> parseInstanceMessage(std::string_view bytes) {
    if (bytes.size() > maximumInstanceMessageSize)
        return std::nullopt;
    const auto greeted = takeField(bytes);
    const auto url = takeField(bytes);
    const auto token = takeField(bytes);
    if (greeted != greeting || !url || !token || !bytes.empty())
        return std::nullopt;
    InstanceMessage message{.url = std::nullopt, .activationToken = std::string(*token)};
    if (!url->empty()) {
        message.url = std::string(*url);
        if (!isLaunchUrl(*message.url))
            return std::nullopt;
    }
    return message;
}

} // namespace join::platform
