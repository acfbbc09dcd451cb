#include "platform/linux/helpers/hdiutil/ImageKind.h"

#include "platform/Exception.h"
#include "platform/linux/helpers/hdiutil/Partitions.h"
#include "platform/linux/helpers/hdiutil/UdifTrailer.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <vector>

namespace join::platform::hdiutil {

namespace {

using namespace std::string_view_literals;

/// Version 2 has its header at the beginning, version 1 at the end.
bool isEncrypted(const RandomAccess& image) {
    return image.read(0, 8) == "encrcdsa" ||
           image.read(std::max<std::uint64_t>(image.size(), 8) - 8, 8) == "cdsaencr";
}

void requireWhole(bool isWhole) {
    if (!isWhole)
        throw Exception("the image is damaged: its volume is cut off");
}

bool isHfsPlus(const RandomAccess& image, const Extent& place) {
    const std::string header = image.read(place.offset + 1024, 512);
    if (header.size() != 512 || (!header.starts_with("H+\0\4"sv) && !header.starts_with("HX\0\5"sv)))
        return false;
    requireWhole(bigEndian(header, 40, 4) * bigEndian(header, 44, 4) <= place.size);
    return true;
}

/// An HFS+ volume may be wrapped in an HFS volume, which tells old Macs that they cannot read it.
Extent unwrapped(const RandomAccess& image, const Extent& place) {
    const std::string header = image.read(place.offset + 1024, 512);
    if (header.size() != 512 || !header.starts_with("BD") || header.compare(124, 2, "H+") != 0)
        return place;
    const std::uint64_t blockSize = bigEndian(header, 20, 4);
    const Extent volume{bigEndian(header, 28, 2) * 512 + bigEndian(header, 126, 2) * blockSize,
                        bigEndian(header, 128, 2) * blockSize};
    requireWhole(volume.offset <= place.size && volume.size <= place.size - volume.offset);
    return {place.offset + volume.offset, volume.size};
}

std::optional<ImageFacts> volumeAt(const RandomAccess& image, const Extent& place) {
    const Extent inner = unwrapped(image, place);
    if (isHfsPlus(image, inner))
        return ImageFacts{ImageKind::hfsPlus, inner};
    if (image.read(place.offset + 32, 4) == "NXSB")
        return ImageFacts{ImageKind::apfs, place};
    return std::nullopt;
}

void refuseOtherFileSystem(const RandomAccess& image, const Extent& volume) {
    struct Signature {
        std::uint64_t place;
        std::string_view bytes;
        const char* fileSystem;
    };
    constexpr Signature signatures[] = {{3, "EXFAT   "sv, "exFAT"}, {3, "NTFS    "sv, "NTFS"},
                                        {54, "FAT1"sv, "FAT"},      {82, "FAT32"sv, "FAT"},
                                        {1024, "BD"sv, "HFS"},      {1080, "\x53\xEF"sv, "ext"},
                                        {32769, "BEA01"sv, "UDF"}};
    for (const auto& [place, bytes, fileSystem] : signatures)
        if (image.read(volume.offset + place, bytes.size()) == bytes)
            throw Exception(std::string("the image holds another file system: ") + fileSystem);
}

} // namespace

ImageFacts tellKind(const RandomAccess& image) {
    const Extent whole{0, image.size()};
    if (isUdif(image))
        return {ImageKind::udif, whole};
    if (isEncrypted(image))
        throw Exception("the image is encrypted");
    if (const auto volume = volumeAt(image, whole))
        return *volume;
    const std::vector<Extent> partitions = partitionsOf(image);
    std::vector<ImageFacts> volumes;
    for (const Extent& partition : partitions)
        if (const auto volume = volumeAt(image, partition))
            volumes.push_back(*volume);
    if (volumes.size() > 1)
        throw Exception("the image holds more than one volume");
    if (!volumes.empty())
        return volumes.front();
    if (image.read(32769, 5) == "CD001")
        return {ImageKind::iso, whole};
    refuseOtherFileSystem(image, whole);
    for (const Extent& partition : partitions)
        refuseOtherFileSystem(image, partition);
    throw Exception("this is no disk image");
}

const char* typeName(ImageKind kind) {
    constexpr std::array names{"Dmg", "HFS", "APFS", "Iso"};
    return names.at(static_cast<std::size_t>(kind));
}

} // namespace join::platform::hdiutil
