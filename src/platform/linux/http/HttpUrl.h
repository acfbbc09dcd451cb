#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace join::platform {

/// Returns why the text is not an acceptable absolute https URL, or nothing if it is one:
///
///     "https://" host [":" port] [path] ["?" query] ["#" fragment]      (RFC 3986, RFC 9110)
///
/// The host is not empty. A port, if given, is from 1 to 65535. No user precedes the host, because that would
/// hide the host from the reader. The scheme's case does not matter. Characters outside RFC 3986, including
/// non-ASCII ones, must be percent-encoded; square brackets may only enclose an IPv6 address.
std::optional<std::string> reasonToRefuseUrl(std::string_view url);

} // namespace join::platform
