#pragma once

#include <string>
#include <string_view>

namespace join::platform {

/// Returns the message in a form that is safe in a log read in a terminal: bytes that are not UTF-8, and
/// control characters except line feed and tab, become \xNN, byte by byte.
std::string escapedForLog(std::string_view message);

} // namespace join::platform
