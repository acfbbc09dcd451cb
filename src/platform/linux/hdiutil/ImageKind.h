#pragma once

#include "platform/linux/hdiutil/Bytes.h"

#include <cstdint>

namespace join::platform::hdiutil {

enum class ImageKind { udif, hfsPlus, apfs, iso };

struct ImageFacts {
    ImageKind kind;
    std::uint64_t volumeOffset = 0; ///< of an HFS+ volume; in a hybrid it lies behind the ISO one's head
};

/// What an image is, told by its content: Apple's Universal Disk Image Format, an HFS+ or HFSX volume, an
/// APFS container or an ISO 9660 volume. A hybrid of the last and HFS+ is, as on a Mac, taken for the HFS+
/// volume. Volumes that are cut off are refused. Throws Exception when it is none of these.
ImageFacts tellKind(const RandomAccess& image);

} // namespace join::platform::hdiutil
