#include "platform/linux/helpers/hdiutil/UdifTrailer.h"

#include "platform/Exception.h"

#include <string>

namespace join::platform::hdiutil {

namespace {

constexpr std::uint64_t formatVersion = 4;

/// Types of checksums, and the size of a CRC in bits.
constexpr std::uint64_t noChecksum = 0;
constexpr std::uint64_t crcChecksum = 2;
constexpr std::uint64_t crcBits = 32;

/// Returns an empty text for an image that is too small.
std::string lastBytes(const RandomAccess& image) {
    return image.size() < UdifTrailer::size ? std::string()
                                            : image.read(image.size() - UdifTrailer::size, UdifTrailer::size);
}

bool hasSignature(const std::string& bytes) { return bytes.starts_with("koly"); }

bool hasVersionAndSize(const std::string& bytes) {
    return bigEndian(bytes, 4, 4) == formatVersion && bigEndian(bytes, 8, 4) == UdifTrailer::size;
}

void require(bool condition) {
    if (!condition)
        throw Exception("the image is damaged: its trailer is wrong");
}

} // namespace

bool isUdif(const RandomAccess& image) {
    const std::string bytes = lastBytes(image);
    return bytes.size() == UdifTrailer::size && (hasSignature(bytes) || hasVersionAndSize(bytes));
}

UdifTrailer readUdifTrailer(const RandomAccess& image) {
    const std::string bytes = lastBytes(image);
    require(bytes.size() == UdifTrailer::size && hasSignature(bytes) && hasVersionAndSize(bytes));
    const std::uint64_t resourceFork = bigEndian(bytes, 48, 8);
    const std::uint64_t propertyList = bigEndian(bytes, 224, 8);
    UdifTrailer trailer{.data = {bigEndian(bytes, 24, 8), bigEndian(bytes, 32, 8)},
                        .isRaw = resourceFork == 0 && propertyList == 0,
                        .dataCrc = {}};
    const std::uint64_t room = image.size() - UdifTrailer::size;
    require(trailer.data.offset <= room && trailer.data.size <= room - trailer.data.offset);
    const std::uint64_t checksum = bigEndian(bytes, 80, 4);
    if (checksum == noChecksum)
        return trailer;
    require(checksum == crcChecksum && bigEndian(bytes, 84, 4) == crcBits);
    trailer.dataCrc = static_cast<std::uint32_t>(bigEndian(bytes, 88, 4));
    return trailer;
}

} // namespace join::platform::hdiutil
