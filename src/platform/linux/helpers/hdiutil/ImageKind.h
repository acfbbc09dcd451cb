#pragma once

#include "platform/linux/helpers/hdiutil/Bytes.h"

namespace join::platform::hdiutil {

enum class ImageKind { udif, hfsPlus, apfs, iso };

struct ImageFacts {
    ImageKind kind;
    Extent place; ///< of the volume; all of the image but where that is partitioned or a hybrid
};

/// What an image is, told by its content: Apple's Universal Disk Image Format, an HFS+ or HFSX volume (Apple
/// Technical Note TN1150), an APFS container ("Apple File System Reference") or an ISO 9660 volume
/// (ECMA-119); the second and the third also as a partition. A hybrid of ISO 9660 and HFS+ is, as on a Mac,
/// taken for the HFS+ volume. Throws Exception, with the reason, when it is none of these, encrypted, cut
/// off, or holds more than one volume.
ImageFacts tellKind(const RandomAccess& image);

/// What 7zz calls such an image, in its listing and, in any case of letters, behind its option -t.
const char* typeName(ImageKind kind);

} // namespace join::platform::hdiutil
