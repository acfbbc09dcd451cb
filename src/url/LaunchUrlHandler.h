#pragma once

#include <string>

namespace join {

/// Writes what a launch URL says into the session state, and what it holds into the log. The URL is given as
/// its bytes came. Whether it has a key; without one the session keeps the key that it had.
bool applyLaunchUrl(const std::string& url);

} // namespace join
