#include "images/PartitionedDisk.h"

#include "images/Numbers.h"

#include <cstdint>
#include <zlib.h>

namespace join::tools {

namespace {

constexpr std::size_t sectorSize = 512;

void pad(std::string& bytes, std::size_t size) { bytes.resize(size); }

std::string appleMapEntry(std::uint32_t entries, std::size_t first, std::size_t sectors,
                          const std::string& type) {
    std::string bytes{'P', 'M', 0, 0};
    appendBig32(bytes, entries);
    appendBig32(bytes, first);
    appendBig32(bytes, sectors);
    bytes += "disk image";
    pad(bytes, 48);
    bytes += type;
    pad(bytes, 80);
    appendBig32(bytes, 0); // the data begin here
    appendBig32(bytes, sectors);
    pad(bytes, sectorSize);
    return bytes;
}

std::vector<DiskPart> withAppleMap(std::string_view volume) {
    constexpr std::size_t first = 64;
    constexpr std::size_t free = 10;
    const std::size_t sectors = volume.size() / sectorSize;
    std::string driver{'E', 'R', sectorSize >> 8U, 0};
    appendBig32(driver, first + sectors + free);
    pad(driver, sectorSize);
    std::string map = appleMapEntry(3, 1, first - 1, "Apple_partition_map") +
                      appleMapEntry(3, first, sectors, "Apple_HFS") +
                      appleMapEntry(3, first + sectors, free, "Apple_Free");
    pad(map, (first - 1) * sectorSize);
    return {{"Driver Descriptor Map (DDM : 0)", driver},
            {"Apple (Apple_partition_map : 1)", map},
            {"disk image (Apple_HFS : 2)", std::string(volume)},
            {" (Apple_Free : 3)", std::string(free * sectorSize, '\0')}};
}

std::uint32_t crcOf(const std::string& bytes) {
    return static_cast<std::uint32_t>(
        ::crc32_z(0, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()));
}

constexpr std::size_t guidEntries = 128;
constexpr std::size_t guidTableSectors = 32;

std::string guidTable(std::size_t first, std::size_t sectors) {
    using namespace std::string_literals;
    std::string table = "\0SFH\0\0\xAA\x11\xAA\x11\0\x30\x65\x43\xEC\xAC"s; // the type of an HFS+ volume
    table += std::string(16, 'g');                                          // its own identifier
    appendLittle(table, first, 8);
    appendLittle(table, first + sectors - 1, 8);
    pad(table, guidTableSectors * sectorSize);
    return table;
}

std::string guidHeader(std::size_t place, std::size_t other, std::size_t placeOfTable,
                       const std::string& table) {
    constexpr std::size_t size = 92;
    const std::size_t end = place > other ? place : other;
    const auto headerWith = [&](std::uint32_t crc) {
        std::string bytes = "EFI PART";
        appendLittle(bytes, 0x10000, 4); // version
        appendLittle(bytes, size, 4);
        appendLittle(bytes, crc, 4);
        appendLittle(bytes, 0, 4);
        appendLittle(bytes, place, 8);
        appendLittle(bytes, other, 8);
        appendLittle(bytes, 2 + guidTableSectors, 8);       // first usable sector
        appendLittle(bytes, end - guidTableSectors - 1, 8); // last one
        bytes += std::string(16, 'd');                      // the disk's identifier
        appendLittle(bytes, placeOfTable, 8);
        appendLittle(bytes, guidEntries, 4);
        appendLittle(bytes, table.size() / guidEntries, 4);
        appendLittle(bytes, crcOf(table), 4);
        return bytes;
    };
    std::string header = headerWith(crcOf(headerWith(0)));
    pad(header, sectorSize);
    return header;
}

std::string protectiveRecord(std::size_t sectors) {
    std::string record(446, '\0');
    record += {0, 0, 2, 0, '\xEE', '\xFF', '\xFF', '\xFF'};
    appendLittle(record, 1, 4);
    appendLittle(record, sectors - 1, 4);
    pad(record, sectorSize - 2);
    return record + "\x55\xAA";
}

std::vector<DiskPart> withGuidTable(std::string_view volume) {
    constexpr std::size_t first = 40;
    const std::size_t sectors = volume.size() / sectorSize;
    const std::size_t backup = first + sectors;
    const std::size_t last = backup + guidTableSectors;
    const std::string table = guidTable(first, sectors);
    return {{"Protective Master Boot Record (MBR : 0)", protectiveRecord(last + 1)},
            {"GPT Header (Primary GPT Header : 1)", guidHeader(1, last, 2, table)},
            {"GPT Partition Data (Primary GPT Table : 2)", table},
            {" (Apple_Free : 3)", std::string((first - 2 - guidTableSectors) * sectorSize, '\0')},
            {"disk image (Apple_HFS : 4)", std::string(volume)},
            {"GPT Partition Data (Backup GPT Table : 5)", table},
            {"GPT Header (Backup GPT Header : 6)", guidHeader(last, 1, backup, table)}};
}

} // namespace

std::vector<DiskPart> partitionedDisk(std::string_view volume, PartitionMap map) {
    switch (map) {
    case PartitionMap::apple:
        return withAppleMap(volume);
    case PartitionMap::guid:
        return withGuidTable(volume);
    default:
        return {{"whole disk (Apple_HFS : 0)", std::string(volume)}};
    }
}

} // namespace join::tools
