#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace join {

/// The names and values of a launch URL. They refer to the text that was parsed.
using LaunchUrlParameters = std::map<std::string_view, std::string_view>;

struct LaunchUrl {
    LaunchUrlParameters parameters;
    std::size_t skippedPieces = 0; ///< pieces that hold no pair, such as the empty one behind a trailing "&"
    bool hasParameters = false;    ///< false when the URL holds no "//"
};

/// Parses a launch URL, which has no host, path or query and is not percent-decoded:
///
///   url    = "tavojoin:" "//" pairs [ "//" rest ]     ; the rest is not parsed
///   pairs  = piece *( "&" piece )
///   piece  = name "=" value [ "=" rest ]              ; the rest is dropped
///          / name ( "%3D" / "%3d" ) value             ; only in a piece without "="
///
/// Browsers write "=" as "%3D" wherever a "@" follows: they take what stands before it for a user name (URL
/// Standard, authority state). Of two pairs with the same name the later one counts.
LaunchUrl parseLaunchUrl(std::string_view url);

/// The text of a URL that came as bytes: control characters, which no URL may hold, and bytes that are not
/// UTF-8 come out percent-encoded (RFC 3986, section 2.1), everything else as it is.
std::string launchUrlText(std::string_view bytes);

} // namespace join
