#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace join {

/// Once the log file in the Join log folder holds this many bytes, it is copied to a numbered generation and
/// emptied.
inline constexpr std::uint64_t logRotationSize = 0x40001;

/// The generations are join0.log, the newest, to join10.log.
inline constexpr std::int32_t highestLogGeneration = 10;

/// One step of a rotation: removes the destination, then copies the source to it. Both are file names.
struct LogCopy {
    std::string source;
    std::string destination;
    friend bool operator==(const LogCopy&, const LogCopy&) = default;
};

/// Returns the steps of a rotation that fills the generations from the given one downwards, in order.
std::vector<LogCopy> logRotation(std::int32_t highestGeneration);

/// One tick: points the standard streams at the log file, and rotates it if it has grown too large. Main
/// thread only.
void loggingFile();

/// Starts the timer, which ticks ten times a second.
void startLoggingTimer();

} // namespace join
