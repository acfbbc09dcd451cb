#include "images/UdifTail.h"

#include "images/Numbers.h"

#include <algorithm>
#include <string_view>
#include <zlib.h>

namespace join::tools {

namespace {

void appendChecksum(std::string& bytes, std::uint32_t crc) {
    constexpr std::uint32_t crc32Type = 2;
    constexpr std::size_t room = 128;
    appendBig32(bytes, crc32Type);
    appendBig32(bytes, 32); // bits
    appendBig32(bytes, crc);
    bytes.append(room - sizeof crc, '\0');
}

void appendChunk(std::string& table, const UdifChunk& chunk) {
    appendBig32(table, static_cast<std::uint32_t>(chunk.kind));
    appendBig32(table, 0); // comment
    appendBig64(table, chunk.firstSector);
    appendBig64(table, chunk.sectors);
    appendBig64(table, chunk.offset);
    appendBig64(table, chunk.size);
}

std::string blockTable(const UdifPartition& partition, std::uint64_t dataSize) {
    std::string table = "mish";
    appendBig32(table, 1); // version
    appendBig64(table, partition.firstSector);
    appendBig64(table, partition.sectors);
    appendBig64(table, 0);                    // the chunks' offsets count from here
    appendBig32(table, udifChunkSectors + 8); // sectors of memory to read with
    appendBig32(table, 0);                    // number of this table
    table.append(24, '\0');                   // reserved
    appendChecksum(table, partition.crc);
    appendBig32(table, partition.chunks.size() + 1);
    for (const UdifChunk& chunk : partition.chunks)
        appendChunk(table, chunk);
    appendChunk(table, {ChunkKind::end, partition.sectors, 0, dataSize, 0});
    return table;
}

std::string base64(std::string_view bytes) {
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (; !bytes.empty(); bytes.remove_prefix(std::min<std::size_t>(3, bytes.size()))) {
        std::uint32_t group = 0;
        for (std::size_t i = 0; i < 3; ++i)
            group = group << 8U | (i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0U);
        for (std::size_t i = 0; i < 4; ++i)
            text += i <= bytes.size() ? digits[group >> (18 - 6 * i) & 63U] : '=';
    }
    return text;
}

std::string resource(const std::string& name, std::size_t number, std::string_view bytes) {
    return "\t\t\t<dict>\n\t\t\t\t<key>Attributes</key>\n\t\t\t\t<string>0x0050</string>\n"
           "\t\t\t\t<key>CFName</key>\n\t\t\t\t<string>" +
           name + "</string>\n\t\t\t\t<key>Data</key>\n\t\t\t\t<data>" + base64(bytes) +
           "</data>\n\t\t\t\t<key>ID</key>\n\t\t\t\t<string>" + std::to_string(number) +
           "</string>\n\t\t\t\t<key>Name</key>\n\t\t\t\t<string>" + name + "</string>\n\t\t\t</dict>\n";
}

std::string resources(std::string_view type, const std::string& list) {
    return "\t\t<key>" + std::string(type) + "</key>\n\t\t<array>\n" + list + "\t\t</array>\n";
}

/// A licence in one language: the list of languages, the labels of the buttons, and the text.
std::string licence() {
    using namespace std::string_literals;
    return resources("LPic", resource("", 5000, "\0\0\0\1\0\0\0\0\0\0"s)) +
           resources("STR#", resource("English", 5000, "\0\2\5Agree\10Disagree"s)) +
           resources("TEXT", resource("English", 5000, "Use it as you like."));
}

std::string propertyList(const UdifContents& contents) {
    std::string tables;
    for (std::size_t number = 0; number < contents.partitions.size(); ++number) {
        const UdifPartition& partition = contents.partitions[number];
        tables += resource(partition.name, number, blockTable(partition, contents.dataSize));
    }
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
	<key>resource-fork</key>
	<dict>
)" + (contents.style.hasLicence ? licence() : std::string()) +
           resources("blkx", tables) + R"(	</dict>
</dict>
</plist>
)";
}

/// Has the place and the head of a signature, but signs nothing.
std::string signature(const UdifContents& contents) {
    std::string bytes;
    if (!contents.style.isSigned)
        return bytes;
    appendBig32(bytes, 0xFADE0CC0);
    appendBig32(bytes, 12); // bytes
    appendBig32(bytes, 0);  // parts
    return bytes;
}

/// The checksum of the checksums of all tables.
std::uint32_t masterCrc(const UdifContents& contents) {
    std::string checksums;
    for (const UdifPartition& partition : contents.partitions)
        appendBig32(checksums, partition.crc);
    return static_cast<std::uint32_t>(
        ::crc32_z(0, reinterpret_cast<const Bytef*>(checksums.data()), checksums.size()));
}

std::string trailer(const UdifContents& contents, std::size_t listSize) {
    const std::size_t signatureSize = signature(contents).size();
    const UdifPartition& last = contents.partitions.back();
    std::string bytes = "koly";
    appendBig32(bytes, 4); // version
    appendBig32(bytes, udifTrailerSize);
    appendBig32(bytes, 1); // flags: flattened
    appendBig64(bytes, 0); // running offset of the data fork
    appendBig64(bytes, 0); // offset of the data fork
    appendBig64(bytes, contents.dataSize);
    appendBig64(bytes, 0);  // offset of the resource fork
    appendBig64(bytes, 0);  // its size
    appendBig32(bytes, 1);  // number of this segment
    appendBig32(bytes, 1);  // number of segments
    bytes.append(16, '\0'); // segment identifier
    appendChecksum(bytes, contents.dataCrc);
    appendBig64(bytes, contents.dataSize); // offset of the property list
    appendBig64(bytes, listSize);
    bytes.append(64, '\0'); // reserved
    appendBig64(bytes, signatureSize > 0 ? contents.dataSize + listSize : 0);
    appendBig64(bytes, signatureSize);
    bytes.append(40, '\0'); // reserved
    appendChecksum(bytes, masterCrc(contents));
    appendBig32(bytes, 1); // variant: a device's image
    appendBig64(bytes, last.firstSector + last.sectors);
    bytes.append(12, '\0'); // reserved
    return bytes;
}

} // namespace

std::string udifTail(const UdifContents& contents) {
    const std::string list = contents.style.isListed ? propertyList(contents) : std::string();
    return list + signature(contents) + trailer(contents, list.size());
}

} // namespace join::tools
