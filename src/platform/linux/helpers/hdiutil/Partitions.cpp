#include "platform/linux/helpers/hdiutil/Partitions.h"

#include "platform/Exception.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace join::platform::hdiutil {

namespace {

using namespace std::string_view_literals;

void add(std::vector<Extent>& partitions, const RandomAccess& disk, Extent partition) {
    const bool isNew = std::ranges::count(partitions, partition.offset, &Extent::offset) == 0;
    if (!isNew || partition.offset >= disk.size())
        return;
    partition.size = std::min(partition.size, disk.size() - partition.offset);
    partitions.push_back(partition);
}

void addThoseOfAppleMap(const RandomAccess& disk, std::vector<Extent>& partitions) {
    constexpr std::uint64_t maximum = 63;
    const std::uint64_t blockSize = disk.read(0, 4) == "ER\x08\0"sv ? 2048 : sectorSize;
    for (std::uint64_t number = 1; number <= maximum; ++number) {
        const std::string entry = disk.read(number * blockSize, sectorSize);
        if (entry.size() != sectorSize || !entry.starts_with("PM"))
            break;
        add(partitions, disk, {bigEndian(entry, 8, 4) * blockSize, bigEndian(entry, 12, 4) * blockSize});
    }
}

void addThoseOfGuidTable(const RandomAccess& disk, std::vector<Extent>& partitions) {
    constexpr std::size_t entrySize = 128;
    constexpr std::uint64_t maximum = 128;
    const std::string header = disk.read(sectorSize, sectorSize);
    if (header.size() != sectorSize || !header.starts_with("EFI PART") ||
        littleEndian(header, 84, 4) != entrySize)
        return;
    const std::uint64_t table = littleEndian(header, 72, 8);
    const std::uint64_t sectors = disk.size() / sectorSize;
    for (std::uint64_t number = 0; table < sectors && number < maximum; ++number) {
        const std::string entry = disk.read(table * sectorSize + number * entrySize, entrySize);
        if (entry.size() != entrySize)
            break;
        const std::uint64_t first = littleEndian(entry, 32, 8);
        const std::uint64_t last = littleEndian(entry, 40, 8);
        if (first > 0 && first <= last && last < sectors)
            add(partitions, disk, {first * sectorSize, (last - first + 1) * sectorSize});
    }
}

/// Returns the type in "disk image (Apple_HFS : 4)", or the whole name if it has another form.
std::string_view typeIn(std::string_view name) {
    const auto begin = name.rfind('(');
    const auto end = name.rfind(" :");
    if (begin == std::string_view::npos || end == std::string_view::npos || end < begin)
        return name;
    return name.substr(begin + 1, end - begin - 1);
}

bool isOfAMac(std::string_view type) {
    return type == "Apple_HFS" || type == "Apple_HFSX" || type == "Apple_APFS";
}

/// Returns whether it is one of the partitions that disks have beside their volumes, EFI's own included.
bool isHelper(std::string_view type) {
    constexpr std::array parts{"Apple_Free"sv, "Apple_partition_map"sv,
                               "DDM"sv,        "Driver"sv,
                               "Patches"sv,    " GPT "sv,
                               "MBR"sv,        "C12A7328-F81F-11D2-BA4B-00A0C93EC93B"sv};
    const std::string text = " " + std::string(type) + " ";
    return std::any_of(parts.begin(), parts.end(),
                       [&](std::string_view part) { return text.find(part) != std::string::npos; });
}

} // namespace

std::vector<Extent> partitionsOf(const RandomAccess& disk) {
    std::vector<Extent> partitions;
    addThoseOfAppleMap(disk, partitions);
    addThoseOfGuidTable(disk, partitions);
    return partitions;
}

Extent partitionOfVolume(const Listing& partitions) {
    std::vector<Extent> ofMacs;
    std::vector<Extent> others;
    std::uint64_t place = 0;
    for (const ListedEntry& entry : partitions.entries) {
        if (entry.size > UINT64_MAX - place)
            throw Exception("the image is damaged: it is too large");
        const std::string_view type = typeIn(entry.comment);
        if (isOfAMac(type))
            ofMacs.push_back({place, entry.size});
        else if (!isHelper(type))
            others.push_back({place, entry.size});
        place += entry.size;
    }
    const std::vector<Extent>& volumes = ofMacs.empty() ? others : ofMacs;
    if (volumes.empty())
        throw Exception("the image holds no volume");
    if (volumes.size() > 1)
        throw Exception("the image holds more than one volume");
    return volumes.front();
}

} // namespace join::platform::hdiutil
