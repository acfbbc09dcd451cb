#pragma once

#include <string>
#include <string_view>

namespace join::platform {

/// The message as it may stand in a log that somebody reads in a terminal: bytes that are not UTF-8, and the
/// control characters other than line feed and tab, are written as \xNN, byte by byte.
std::string escapedForLog(std::string_view message);

} // namespace join::platform
