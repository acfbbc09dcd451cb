#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace join::platform {

/// Why the text is no absolute https URL that may be asked; nothing when it is one:
///
///     "https://" host [":" port] [path] ["?" query] ["#" fragment]      (RFC 3986, RFC 9110)
///
/// with at least one character of host, a port of at most 65535 and not 0, and no user before the host, which
/// would hide it from its reader. The scheme's case does not matter. Characters outside RFC 3986, non-ASCII
/// ones among them, must come percent-encoded; square brackets only enclose an IPv6 address.
std::optional<std::string> reasonToRefuseUrl(std::string_view url);

} // namespace join::platform
