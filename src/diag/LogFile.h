#pragma once

#include <cstdint>

namespace join {

/// Once the log file in the Join log folder holds this many bytes, it is copied to a numbered generation and
/// emptied.
inline constexpr std::uint64_t logRotationSize = 0x40001;

/// One tick: points the standard streams at the log file, and rotates it if it has grown too large. Main
/// thread only.
void loggingFile();

/// Starts the timer, which ticks ten times a second.
void startLoggingTimer();

} // namespace join
