#include "platform/linux/hdiutil/ImageKind.h"

#include "platform/Exception.h"
#include "platform/linux/hdiutil/UdifTrailer.h"

#include <optional>
#include <string>

namespace join::platform::hdiutil {

namespace {

constexpr std::size_t partitionEntrySize = 512;
constexpr std::size_t maximumPartitions = 63;

bool isUdif(const RandomAccess& image) {
    return image.size() >= UdifTrailer::size &&
           isUdifTrailer(image.read(image.size() - UdifTrailer::size, UdifTrailer::size));
}

/// The size in bytes of the HFS+ volume that begins at the offset; nothing when none does.
std::optional<std::uint64_t> hfsPlusSize(const RandomAccess& image, std::uint64_t offset) {
    using namespace std::string_view_literals;
    const std::string header = image.read(offset + 1024, 512);
    if (header.size() != 512 || (!header.starts_with("H+\0\4"sv) && !header.starts_with("HX\0\5"sv)))
        return std::nullopt;
    return bigEndian(header, 40, 4) * bigEndian(header, 44, 4);
}

/// Finds the HFS+ partition in an Apple partition map.
std::optional<std::uint64_t> hfsPlusPartition(const RandomAccess& image) {
    const std::string driver = image.read(0, 4);
    const bool largeBlocks = driver.starts_with("ER") && bigEndian(driver, 2, 2) == 2048;
    const std::uint64_t blockSize = largeBlocks ? 2048 : 512;
    for (std::uint64_t number = 1; number <= maximumPartitions; ++number) {
        const std::string entry = image.read(number * blockSize, partitionEntrySize);
        if (entry.size() != partitionEntrySize || !entry.starts_with("PM"))
            break;
        if (entry.compare(48, 10, std::string("Apple_HFS\0", 10)) == 0)
            return bigEndian(entry, 8, 4) * blockSize;
    }
    return std::nullopt;
}

bool isHfsPlus(const RandomAccess& image, std::uint64_t offset) {
    const auto size = hfsPlusSize(image, offset);
    if (!size)
        return false;
    if (offset > image.size() || *size > image.size() - offset)
        throw Exception("the image is damaged: its volume is cut off");
    return true;
}

} // namespace

ImageFacts tellKind(const RandomAccess& image) {
    if (isUdif(image))
        return {.kind = ImageKind::udif};
    if (isHfsPlus(image, 0))
        return {.kind = ImageKind::hfsPlus};
    if (image.read(32, 4) == "NXSB")
        return {.kind = ImageKind::apfs};
    if (const auto partition = hfsPlusPartition(image); partition && isHfsPlus(image, *partition))
        return {.kind = ImageKind::hfsPlus, .volumeOffset = *partition};
    if (image.read(32769, 5) == "CD001")
        return {.kind = ImageKind::iso};
    throw Exception("this is no disk image");
}

} // namespace join::platform::hdiutil
