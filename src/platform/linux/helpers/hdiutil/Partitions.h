#pragma once

#include "platform/linux/helpers/hdiutil/Bytes.h"
#include "platform/linux/helpers/hdiutil/Listing.h"

#include <vector>

namespace join::platform::hdiutil {

/// Returns the partitions of a disk from its Apple partition map ("Inside Macintosh: Devices") and its GUID
/// partition table (UEFI Specification), without duplicates. Partitions are cut off, or left out, at the end
/// of the image.
std::vector<Extent> partitionsOf(const RandomAccess& disk);

/// Returns the only partition with a volume in an image of Apple's format, judged by the names in the listing
/// of its partitions. The place is that in 7zz's output for all of them. Throws Exception if there is no such
/// partition, or more than one.
Extent partitionOfVolume(const Listing& partitions);

} // namespace join::platform::hdiutil
