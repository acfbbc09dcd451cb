#pragma once

#include "platform/Clock.h"

#include <string>
#include <string_view>

namespace join::platform {

/// Who writes a log line.
struct LogSource {
    std::string_view processName;
    int process = 0;
    int thread = 0;
};

/// What a log line begins with: "2026-11-22 21:56:36.123 Join[417:418] ".
std::string logPrefix(const LocalTime& time, const LogSource& source);

/// The message as it may stand in a log that somebody reads in a terminal: bytes that are not UTF-8, and the
/// control characters other than line feed and tab, are written as \xNN, byte by byte.
std::string escapedForLog(std::string_view message);

} // namespace join::platform
