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
    std::size_t skippedPieces = 0; ///< pieces that hold no pair, such as the empty one after a trailing "&"
    bool hasParameters = false;    ///< false if the URL contains no "//"
};

/// Parses a launch URL, which has no host, path or query and is not percent-decoded:
///
///   url    = "tavojoin:" "//" pairs [ "//" rest ]     ; the rest is not parsed
///   pairs  = piece *( "&" piece )
///   piece  = name "=" value [ "=" rest ]              ; the rest is dropped
///          / name ( "%3D" / "%3d" ) value             ; only in a piece without "="
///
/// Browsers write "=" as "%3D" wherever an "@" follows: they take what precedes it for a user name (URL
/// Standard, authority state). If a name occurs twice, the later pair counts.
LaunchUrl parseLaunchUrl(std::string_view url);

/// Returns the text of a URL received as bytes: control characters, which no URL may contain, and bytes that
/// are not UTF-8 are percent-encoded (RFC 3986, section 2.1); everything else is unchanged.
std::string launchUrlText(std::string_view bytes);

} // namespace join
