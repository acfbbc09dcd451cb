#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace join::tools {

/// What a volume is made of.
struct VolumeSource {
    std::filesystem::path folder;
    std::string name;
    std::filesystem::path alsoFolder = {}; ///< whose content is put beside that of the other; empty for none
};

/// Gets a volume's bytes piece by piece; what it throws ends the making.
using ByteSink = std::function<void(std::string_view)>;

/// Makes an HFS+ volume, a whole number of 512-byte sectors. Throws std::runtime_error.
void makeHfsVolume(const VolumeSource& source, const ByteSink& sink);

/// Makes an ISO 9660 volume with Rock Ridge names, modes and links. Throws std::runtime_error.
void makeIsoVolume(const VolumeSource& source, const ByteSink& sink);

/// Where a partition lies, in bytes.
struct PartitionPlace {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
};

/// Finds the HFS+ partition in an Apple partition map: 512-byte entries that begin at byte 512 of the medium.
/// Throws std::runtime_error when the head holds no such map.
PartitionPlace findHfsPartition(std::string_view headOfMedium);

} // namespace join::tools
