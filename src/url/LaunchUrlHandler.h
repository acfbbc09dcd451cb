#pragma once

#include <string>

namespace join {

/// Writes the contents of a launch URL into the session state and the log. The URL is given as raw bytes.
/// Returns whether it has a key; if not, the session keeps its present key.
bool applyLaunchUrl(const std::string& url);

} // namespace join
