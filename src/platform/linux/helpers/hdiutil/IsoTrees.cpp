#include "platform/linux/helpers/hdiutil/IsoTrees.h"

namespace join::platform::hdiutil {

namespace {

constexpr std::uint64_t discSectorSize = 2048;
constexpr std::uint64_t firstDescriptor = 16;
constexpr std::uint64_t maximumDescriptors = 64;

enum DescriptorType : char { primary = 1, supplementary = 2 };

/// With Rock Ridge, the root folder's first record has a mark after ISO 9660's own 34 bytes.
bool hasRockRidge(const RandomAccess& image, std::string_view descriptor) {
    constexpr std::size_t placeOfRoot = 162;
    const std::uint64_t root = bigEndian(descriptor, placeOfRoot, 4) * discSectorSize;
    return image.read(root + 34, 6) == "SP\x07\x01\xBE\xEF";
}

/// A Joliet descriptor uses UCS-2, which its escape sequence shows.
bool isJoliet(std::string_view descriptor) {
    const std::string_view escape = descriptor.substr(88, 3);
    return descriptor.front() == supplementary && (escape == "%/@" || escape == "%/C" || escape == "%/E");
}

std::string utf8Of(unsigned unit) {
    const auto byte = [](unsigned value) { return static_cast<char>(value); };
    if (unit < 0x80)
        return {byte(unit)};
    const char last = byte(0x80U | (unit & 0x3FU));
    if (unit < 0x800)
        return {byte(0xC0U | unit >> 6U), last};
    return {byte(0xE0U | unit >> 12U), byte(0x80U | (unit >> 6U & 0x3FU)), last};
}

std::string volumeNameIn(std::string_view descriptor) {
    std::string name(descriptor.substr(40, 32));
    if (isJoliet(descriptor)) {
        std::string text;
        for (std::size_t place = 0; place < name.size(); place += 2)
            text += utf8Of(static_cast<unsigned>(bigEndian(name, place, 2)));
        name = text;
    }
    return name.substr(0, name.find_last_not_of(std::string(" \0", 2)) + 1);
}

} // namespace

IsoTree richerTree(const RandomAccess& image) {
    IsoTree tree;
    bool isRicherBefore = false;
    for (std::uint64_t number = 0; number < maximumDescriptors; ++number) {
        const std::uint64_t place = (firstDescriptor + number) * discSectorSize;
        const std::string descriptor = image.read(place, discSectorSize);
        if (descriptor.size() != discSectorSize || descriptor.compare(1, 5, "CD001") != 0)
            break;
        if (descriptor.front() == primary) {
            isRicherBefore = hasRockRidge(image, descriptor);
            tree.volumeName = volumeNameIn(descriptor);
        } else if (isJoliet(descriptor)) {
            if (isRicherBefore)
                tree.poorer = place;
            else
                tree.volumeName = volumeNameIn(descriptor);
            break;
        }
    }
    return tree;
}

} // namespace join::platform::hdiutil
