#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace join::tools {

enum class PartitionMap { none, apple, guid };

/// A piece of a disk, with its name in an image of Apple's format.
struct DiskPart {
    std::string name;
    std::string bytes;
};

/// A disk that holds the volume as its one partition, with all that the map needs around it: an Apple
/// partition map ("Inside Macintosh: Devices") or a GUID partition table (UEFI Specification). The pieces, in
/// their order, are the disk. The volume is a whole number of 512-byte sectors.
std::vector<DiskPart> partitionedDisk(std::string_view volume, PartitionMap map);

} // namespace join::tools
