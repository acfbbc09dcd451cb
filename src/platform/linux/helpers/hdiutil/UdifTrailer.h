#pragma once

#include "platform/linux/helpers/hdiutil/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace join::platform::hdiutil {

/// The last bytes of an image in Apple's Universal Disk Image Format, as far as they say how to check it.
/// What they and the property list say about chunks and partitions is 7zz's to read and to check. Apple
/// publishes no description; "Demystifying the DMG File Format" (newosxbook.com/DMG.html) is one.
struct UdifTrailer {
    static constexpr std::size_t size = 512;

    Extent data;                          ///< the chunks in the image
    bool isRaw = false;                   ///< no list of chunks anywhere: the data are the disk
    std::optional<std::uint32_t> dataCrc; ///< of the chunks as they are stored; images may go without
};

/// Whether this is meant to be such an image. One damaged byte of its trailer does not make it anything else:
/// a plain one would pass for the bare volume at its beginning.
bool isUdif(const RandomAccess& image);

/// Throws Exception when the trailer is damaged, or says what cannot be in an image of that size.
UdifTrailer readUdifTrailer(const RandomAccess& image);

} // namespace join::platform::hdiutil
