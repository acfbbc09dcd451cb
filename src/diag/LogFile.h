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

/// The highest generation that the next rotation of this run writes.
inline std::int32_t logFileNameCount = 0;

/// One step of a rotation: the destination is removed, then the source copied to it. File names.
struct LogCopy {
    std::string source;
    std::string destination;
    friend bool operator==(const LogCopy&, const LogCopy&) = default;
};

/// The steps of a rotation that writes generations down from the given one, in their order.
std::vector<LogCopy> logRotation(std::int32_t highestGeneration);

} // namespace join
