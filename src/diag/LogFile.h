#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace join {

/// The log file in the Join log folder is copied to a numbered generation and emptied when it holds this many
/// bytes.
inline constexpr std::uint64_t logRotationSize = 0x40001;

/// The generations are join0.log, the newest, to join10.log.
inline constexpr std::int32_t highestLogGeneration = 10;

/// One step of a rotation: the destination is removed, then the source copied to it. File names.
struct LogCopy {
    std::string source;
    std::string destination;
    friend bool operator==(const LogCopy&, const LogCopy&) = default;
};

/// The steps of a rotation that writes generations down from the given one, in their order.
std::vector<LogCopy> logRotation(std::int32_t highestGeneration);

/// One tick: the standard streams follow the log file, which is rotated when it has grown too large. Main
/// thread only.
void loggingFile();

/// Starts the ticks, ten in a second.
void startLoggingTimer();

} // namespace join
