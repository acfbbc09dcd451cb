#pragma once

#include "platform/linux/helpers/hdiutil/Bytes.h"

namespace join::platform::hdiutil {

enum class ImageKind { udif, hfsPlus, apfs, iso };

struct ImageFacts {
    ImageKind kind;
    Extent place; ///< of the volume; the whole image unless that is partitioned or a hybrid
};

/// Returns the kind of an image, judged by its contents: Apple's Universal Disk Image Format, an HFS+ or HFSX
/// volume (Apple Technical Note TN1150), an APFS container ("Apple File System Reference") or an ISO 9660
/// volume (ECMA-119); the second and the third also as a partition. A hybrid of ISO 9660 and HFS+ counts as
/// the HFS+ volume, as on a Mac. Throws Exception with the reason if it is none of these, encrypted, cut off,
/// or contains more than one volume.
ImageFacts tellKind(const RandomAccess& image);

/// Returns 7zz's name for such an image, used in its listing and, in upper or lower case, with its option -t.
const char* typeName(ImageKind kind);

} // namespace join::platform::hdiutil
