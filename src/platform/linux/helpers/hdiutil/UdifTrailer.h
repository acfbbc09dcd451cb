#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace join::platform::hdiutil {

/// The last bytes of an image in Apple's Universal Disk Image Format, as far as they say how to check it.
/// What they and the property list say about chunks and partitions is 7zz's to read and to check.
struct UdifTrailer {
    static constexpr std::size_t size = 512;

    std::uint64_t dataOffset = 0; ///< of the chunks, in bytes
    std::uint64_t dataLength = 0;
    bool isRaw = false;                   ///< no list of chunks anywhere: the data are the disk
    std::optional<std::uint32_t> dataCrc; ///< of the chunks as they are stored; images may go without
};

/// Whether an image that ends with these bytes is meant to be such an image. One damaged byte does not make
/// it anything else: a plain one would pass for the bare volume at its beginning.
bool isUdifTrailer(std::string_view lastBytes);

/// Throws Exception when the trailer is damaged, or says what cannot be in an image of that size.
UdifTrailer parseUdifTrailer(std::string_view lastBytes, std::uint64_t imageSize);

} // namespace join::platform::hdiutil
