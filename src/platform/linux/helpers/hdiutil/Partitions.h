#pragma once

#include "platform/linux/helpers/hdiutil/Bytes.h"
#include "platform/linux/helpers/hdiutil/Listing.h"

#include <vector>

namespace join::platform::hdiutil {

/// The partitions of a disk by its Apple partition map ("Inside Macintosh: Devices") and its GUID partition
/// table (UEFI Specification), none twice. What would lie behind the image's end is cut off or left out.
std::vector<Extent> partitionsOf(const RandomAccess& disk);

/// The one partition of an image of Apple's format that holds a volume, by the names that the listing of its
/// partitions has for them; its place in what 7zz puts out for all. Throws Exception when there is none, or
/// more than one.
Extent partitionOfVolume(const Listing& partitions);

} // namespace join::platform::hdiutil
