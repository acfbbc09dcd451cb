#pragma once

#include "platform/linux/helpers/hdiutil/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace join::platform::hdiutil {

/// The last bytes of an image in Apple's Universal Disk Image Format. Apple publishes no description;
/// "Demystifying the DMG File Format" (newosxbook.com/DMG.html) is one.
struct UdifTrailer {
    static constexpr std::size_t size = 512;

    Extent data;                            ///< the chunks in the image
    Extent propertyList;                    ///< with the tables of chunks (UdifTable); in old images empty
    bool isRaw = false;                     ///< no list of chunks anywhere: the data is the disk
    std::optional<std::uint32_t> dataCrc;   ///< of the stored chunks; optional
    std::optional<std::uint32_t> masterCrc; ///< of the checksums of all tables; optional
};

/// Returns the CRC-32 whose kind, size in bits and value are at that place in the bytes, if it is one.
std::optional<std::uint32_t> crcAt(std::string_view bytes, std::size_t place);

/// Returns whether this is meant to be such an image. One damaged byte in the trailer does not change that:
/// otherwise an uncompressed image would pass for the bare volume at its beginning.
bool isUdif(const RandomAccess& image);

/// Throws Exception if the trailer is damaged, or does not fit an image of that size.
UdifTrailer readUdifTrailer(const RandomAccess& image);

} // namespace join::platform::hdiutil
