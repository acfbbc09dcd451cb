#include "platform/linux/http/HttpUrl.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <strings.h>

namespace join::platform {

namespace {

constexpr std::string_view hexDigits = "0123456789ABCDEFabcdef";
constexpr std::string_view urlCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"
                                           "-._~:/?#[]@!$&'()*+,;=%";
constexpr std::string_view scheme = "https://";

bool consistsOf(std::string_view text, std::string_view characters) {
    return text.find_first_not_of(characters) == std::string_view::npos;
}

bool beginsWithScheme(std::string_view url) {
    return url.size() >= scheme.size() && ::strncasecmp(url.data(), scheme.data(), scheme.size()) == 0;
}

bool hasBrokenEscape(std::string_view url) {
    for (auto at = url.find('%'); at != std::string_view::npos; at = url.find('%', at + 1))
        if (at + 2 >= url.size() || !consistsOf(url.substr(at + 1, 2), hexDigits))
            return true;
    return false;
}

/// RFC 3986 allows the digits after the colon to be missing.
bool isPort(std::string_view text) {
    std::uint16_t port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    return text.empty() || (error == std::errc() && end == text.data() + text.size() && port > 0);
}

struct HostAndPort {
    std::string_view host;
    std::string_view port; ///< with its colon; empty if there is none
};

HostAndPort splitAuthority(std::string_view authority) {
    const auto address =
        authority.starts_with('[') ? authority.find(']') : 0; // its colons belong to the host
    const auto end = std::min(authority.find(':', address), authority.size());
    return {authority.substr(0, end), authority.substr(end)};
}

bool isHost(std::string_view host) {
    if (!host.starts_with('['))
        return !host.empty() && host.find_first_of("[]") == std::string_view::npos;
    return host.ends_with(']') && std::count(host.begin(), host.end(), ':') >= 2 &&
           consistsOf(host.substr(1, host.size() - 2), "0123456789ABCDEFabcdef:.");
}

} // namespace

std::optional<std::string> reasonToRefuseUrl(std::string_view url) {
    if (!consistsOf(url, urlCharacters) || hasBrokenEscape(url))
        return "the URL holds characters that no URL has";
    if (!beginsWithScheme(url))
        return "the URL is not an absolute https one";

    const std::string_view afterScheme = url.substr(scheme.size());
    const std::string_view authority = afterScheme.substr(0, afterScheme.find_first_of("/?#"));
    const std::string_view pathAndMore = afterScheme.substr(authority.size());
    if (authority.find('@') != std::string_view::npos)
        return "the URL names a user";
    const auto [host, port] = splitAuthority(authority);
    if (!isHost(host))
        return "the URL has no valid host";
    if (!port.empty() && !isPort(port.substr(1)))
        return "the URL has no valid port";
    if (pathAndMore.find_first_of("[]") != std::string_view::npos ||
        std::count(pathAndMore.begin(), pathAndMore.end(), '#') > 1)
        return "the URL holds characters where no URL has them";
    return std::nullopt;
}

} // namespace join::platform
