#pragma once

#include <string>

namespace join::platform {

/// Whether a text, an argument of the command line for instance, is a launch URL: its scheme, in any case of
/// letters (RFC 3986, section 3.1).
bool isLaunchUrl(const std::string& text);

} // namespace join::platform
