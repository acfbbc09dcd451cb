#include "platform/linux/hdiutil/IsoTrees.h"

namespace join::platform::hdiutil {

namespace {

constexpr std::uint64_t sectorSize = 2048;
constexpr std::uint64_t firstDescriptor = 16;
constexpr std::uint64_t maximumDescriptors = 64;

enum DescriptorType : char { primary = 1, supplementary = 2 };

/// The first record of the root folder begins its Rock Ridge part, if any, with a mark behind the 34 bytes of
/// ISO 9660's own.
bool hasRockRidge(const RandomAccess& image, std::string_view descriptor) {
    constexpr std::size_t placeOfRoot = 162;
    const std::uint64_t root = bigEndian(descriptor, placeOfRoot, 4) * sectorSize;
    return image.read(root + 34, 6) == "SP\x07\x01\xBE\xEF";
}

} // namespace

std::optional<std::uint64_t> placeOfPoorerTree(const RandomAccess& image) {
    bool isRicherBefore = false;
    for (std::uint64_t number = 0; number < maximumDescriptors; ++number) {
        const std::uint64_t place = (firstDescriptor + number) * sectorSize;
        const std::string descriptor = image.read(place, sectorSize);
        if (descriptor.size() != sectorSize || descriptor.compare(1, 5, "CD001") != 0)
            break;
        if (descriptor.front() == primary)
            isRicherBefore = hasRockRidge(image, descriptor);
        else if (descriptor.front() == supplementary && isRicherBefore)
            return place;
    }
    return std::nullopt;
}

} // namespace join::platform::hdiutil
