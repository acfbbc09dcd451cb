#pragma once

#include "platform/linux/helpers/hdiutil/UdifTrailer.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace join::platform::hdiutil {

/// How a chunk is stored; others exist.
enum class ChunkKind : std::uint32_t {
    zeros = 0,
    plain = 1,
    unused = 2, ///< zeros that no checksum covers
    zlib = 0x80000005,
    bzip2 = 0x80000006,
    lzma = 0x80000008, ///< in an xz stream
};

/// Returns whether such a chunk has bytes in the image.
inline bool isStored(ChunkKind kind) { return kind != ChunkKind::zeros && kind != ChunkKind::unused; }

/// Only zeros and what is not used are larger than the maximum, and are not stored.
struct UdifChunk {
    static constexpr std::uint64_t maximumSize = std::uint64_t{16} << 20;

    ChunkKind kind = ChunkKind::zeros;
    Extent place;  ///< where it belongs, in all partitions one after the other
    Extent stored; ///< where the image holds it
};

struct UdifPartition {
    std::string name;
    std::uint64_t size = 0;           ///< in bytes
    std::optional<std::uint32_t> crc; ///< optional
};

/// What an image in Apple's format says about its partitions.
struct UdifTable {
    static constexpr std::uint64_t maximumText = std::uint64_t{16} << 20; ///< some 300,000 chunks
    static constexpr std::uint64_t maximumSize = std::uint64_t{1} << 40;  ///< of all partitions

    std::vector<UdifPartition> partitions; ///< in the order of the property list
    std::vector<UdifChunk> chunks; ///< without gaps, in the order of their places; stored without overlaps
    std::uint64_t bytes = 0;       ///< of all chunks that are stored, once inflated
};

/// Reads the tables of chunks in the image's property list. Returns nothing if only 7zz may be able to read
/// them: not in such a list, not in XML, compressed in another way or in larger chunks. Throws Exception if
/// they are damaged.
std::optional<UdifTable> parseUdifTable(std::string_view propertyList, const UdifTrailer& trailer);

} // namespace join::platform::hdiutil
