#pragma once

#include <string>

namespace join {

enum class LaunchUrlOutcome {
    refused,    ///< its web server is not allowed
    withoutKey, ///< applied; the session keeps its present key
    withKey,    ///< applied
};

/// Writes the contents of a launch URL into the session state and the log. The URL is given as raw bytes. One
/// whose web server the administrator's policy does not allow changes nothing and leaves one line in the log.
LaunchUrlOutcome applyLaunchUrl(const std::string& url);

} // namespace join
