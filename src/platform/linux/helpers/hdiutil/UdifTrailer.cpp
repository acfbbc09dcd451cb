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

void requireTrailer(bool condition) {
    if (!condition)
        throw Exception("the image is damaged: its trailer is wrong");
}

Extent extentAt(const std::string& bytes, std::size_t place, std::uint64_t room) {
    const Extent extent{bigEndian(bytes, place, 8), bigEndian(bytes, place + 8, 8)};
    requireTrailer(extent.offset <= room && extent.size <= room - extent.offset);
    return extent;
}

} // namespace

std::optional<std::uint32_t> crcAt(std::string_view bytes, std::size_t place) {
    if (bigEndian(bytes, place, 4) != crcChecksum || bigEndian(bytes, place + 4, 4) != crcBits)
        return std::nullopt;
    return static_cast<std::uint32_t>(bigEndian(bytes, place + 8, 4));
}

bool isUdif(const RandomAccess& image) {
    const std::string bytes = lastBytes(image);
    return bytes.size() == UdifTrailer::size && (hasSignature(bytes) || hasVersionAndSize(bytes));
}

UdifTrailer readUdifTrailer(const RandomAccess& image) {
    const std::string bytes = lastBytes(image);
    requireTrailer(bytes.size() == UdifTrailer::size && hasSignature(bytes) && hasVersionAndSize(bytes));
    constexpr std::size_t placeOfDataCrc = 80;
    const std::uint64_t room = image.size() - UdifTrailer::size;
    const std::uint64_t resourceFork = bigEndian(bytes, 48, 8);
    UdifTrailer trailer{.data = extentAt(bytes, 24, room),
                        .propertyList = extentAt(bytes, 216, room),
                        .dataCrc = crcAt(bytes, placeOfDataCrc),
                        .masterCrc = crcAt(bytes, 352)};
    trailer.isRaw = resourceFork == 0 && trailer.propertyList.size == 0;
    requireTrailer(trailer.dataCrc || bigEndian(bytes, placeOfDataCrc, 4) == noChecksum);
    return trailer;
}

} // namespace join::platform::hdiutil
