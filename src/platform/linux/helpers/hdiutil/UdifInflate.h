#pragma once

#include "platform/linux/helpers/hdiutil/ImageFile.h"
#include "platform/linux/helpers/hdiutil/UdifTable.h"
#include "platform/linux/process/Interruption.h"

#include <cstdint>
#include <string>

namespace join::platform::hdiutil {

/// Inflates all chunks of an image of Apple's format, on all cores, and compares all checksums. Returns the
/// part that is a partition, in an unnamed file that is created in the folder, which must be private; zeros
/// take no disk space. Throws Exception if the image is damaged or it is interrupted. All threads have ended
/// by then. Memory does not grow with the image.
ImageFile inflateUdif(const RandomAccess& image, const UdifTrailer& trailer, const UdifTable& table,
                      const Extent& part, const std::string& folder, const Interruption& interruption);

/// Compares the checksum of the chunks as stored, where the trailer has one. Throws Exception if it is wrong.
void compareStored(const RandomAccess& image, const UdifTrailer& trailer, const Interruption& interruption);

} // namespace join::platform::hdiutil
