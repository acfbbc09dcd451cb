#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// The end of an image in Apple's Universal Disk Image Format (UDIF), after Apple's hdiutil(1) and the public
/// description "Demystifying the DMG File Format" (newosxbook.com/DMG.html): a property list that holds the
/// table of chunks, and a trailer of 512 bytes.
namespace join::tools {

inline constexpr std::size_t udifSectorSize = 512;
inline constexpr std::size_t udifChunkSectors = 512;
inline constexpr std::size_t udifTrailerSize = 512;

enum class ChunkKind : std::uint32_t {
    raw = 1,
    zero = 2,
    adc = 0x80000004,
    zlib = 0x80000005,
    bzip2 = 0x80000006,
    lzfse = 0x80000007,
    lzma = 0x80000008,
    end = 0xffffffff
};

/// A number of sectors of the partition, and where the image holds them. Sizes and offsets in the image are
/// in bytes.
struct UdifChunk {
    ChunkKind kind = ChunkKind::raw;
    std::uint64_t firstSector = 0;
    std::uint64_t sectors = 0;
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
};

/// A table of chunks.
struct UdifPartition {
    std::string name;
    std::uint64_t firstSector = 0; ///< on the disk
    std::vector<UdifChunk> chunks;
    std::uint64_t sectors = 0;
    std::uint32_t crc = 0; ///< CRC-32 of the partition, its zero chunks left out
};

struct UdifStyle {
    ChunkKind kind = ChunkKind::zlib;
    bool hasLicence = false; ///< resources with a licence to agree to
    bool isSigned = false;   ///< with a signature's place filled between property list and trailer
    bool isListed = true;    ///< else the disk as it is and a trailer, as writable images are
};

/// What the trailer and the property list say about an image.
struct UdifContents {
    std::vector<UdifPartition> partitions;
    std::uint64_t dataSize = 0; ///< of all chunks as stored, from the start of the image
    std::uint32_t dataCrc = 0;  ///< CRC-32 of the chunks as stored
    UdifStyle style = {};
};

/// The property list, the stand-in for a signature, and the trailer, which follow the chunks directly.
std::string udifTail(const UdifContents& contents);

} // namespace join::tools
