#include "platform/linux/helpers/hdiutil/UdifTrailer.h"

#include "platform/Exception.h"
#include "platform/linux/helpers/hdiutil/Bytes.h"

namespace join::platform::hdiutil {

namespace {

constexpr std::string_view signature = "koly";
constexpr std::uint64_t formatVersion = 4;

/// A checksum's type and its size in bits.
constexpr std::uint64_t noChecksum = 0;
constexpr std::uint64_t crcChecksum = 2;
constexpr std::uint64_t crcBits = 32;

bool hasSignature(std::string_view bytes) { return bytes.starts_with(signature); }

bool hasVersionAndSize(std::string_view bytes) {
    return bigEndian(bytes, 4, 4) == formatVersion && bigEndian(bytes, 8, 4) == UdifTrailer::size;
}

void require(bool condition) {
    if (!condition)
        throw Exception("the image is damaged: its trailer is wrong");
}

} // namespace

bool isUdifTrailer(std::string_view lastBytes) {
    return lastBytes.size() == UdifTrailer::size && (hasSignature(lastBytes) || hasVersionAndSize(lastBytes));
}

UdifTrailer parseUdifTrailer(std::string_view lastBytes, std::uint64_t imageSize) {
    require(lastBytes.size() == UdifTrailer::size && imageSize >= UdifTrailer::size);
    require(hasSignature(lastBytes) && hasVersionAndSize(lastBytes));
    const std::uint64_t resourceFork = bigEndian(lastBytes, 48, 8);
    const std::uint64_t propertyList = bigEndian(lastBytes, 224, 8);
    UdifTrailer trailer{.dataOffset = bigEndian(lastBytes, 24, 8),
                        .dataLength = bigEndian(lastBytes, 32, 8),
                        .isRaw = resourceFork == 0 && propertyList == 0,
                        .dataCrc = {}};
    const std::uint64_t room = imageSize - UdifTrailer::size;
    require(trailer.dataOffset <= room && trailer.dataLength <= room - trailer.dataOffset);
    const std::uint64_t checksum = bigEndian(lastBytes, 80, 4);
    if (checksum == noChecksum)
        return trailer;
    require(checksum == crcChecksum && bigEndian(lastBytes, 84, 4) == crcBits);
    trailer.dataCrc = static_cast<std::uint32_t>(bigEndian(lastBytes, 88, 4));
    return trailer;
}

} // namespace join::platform::hdiutil
