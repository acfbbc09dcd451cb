#include "images/UdifTail.h"

#include "images/BigEndian.h"

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

std::string blockTable(const UdifContents& contents) {
    std::string table = "mish";
    appendBig32(table, 1); // version
    appendBig64(table, 0); // first sector
    appendBig64(table, contents.sectors);
    appendBig64(table, 0);                    // the chunks' offsets count from here
    appendBig32(table, udifChunkSectors + 8); // sectors of memory to read with
    appendBig32(table, 0);                    // number of this table
    table.append(24, '\0');                   // reserved
    appendChecksum(table, contents.volumeCrc);
    appendBig32(table, static_cast<std::uint32_t>(contents.chunks.size() + 1));
    for (const UdifChunk& chunk : contents.chunks)
        appendChunk(table, chunk);
    appendChunk(table, {ChunkKind::end, contents.sectors, 0, contents.dataSize, 0});
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

std::string propertyList(const std::string& table) {
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
	<key>resource-fork</key>
	<dict>
		<key>blkx</key>
		<array>
			<dict>
				<key>Attributes</key>
				<string>0x0050</string>
				<key>CFName</key>
				<string>whole disk (Apple_HFS : 0)</string>
				<key>Data</key>
				<data>)" +
           base64(table) + R"(</data>
				<key>ID</key>
				<string>0</string>
				<key>Name</key>
				<string>whole disk (Apple_HFS : 0)</string>
			</dict>
		</array>
	</dict>
</dict>
</plist>
)";
}

/// The checksum of the checksums of all tables; here there is one.
std::uint32_t masterCrc(std::uint32_t tableCrc) {
    std::string checksums;
    appendBig32(checksums, tableCrc);
    return static_cast<std::uint32_t>(
        ::crc32_z(0, reinterpret_cast<const Bytef*>(checksums.data()), checksums.size()));
}

std::string trailer(const UdifContents& contents, std::size_t listSize) {
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
    appendBig32(bytes, 1);  // of so many
    bytes.append(16, '\0'); // segment identifier
    appendChecksum(bytes, contents.dataCrc);
    appendBig64(bytes, contents.dataSize); // offset of the property list
    appendBig64(bytes, listSize);
    bytes.append(120, '\0'); // reserved
    appendChecksum(bytes, masterCrc(contents.volumeCrc));
    appendBig32(bytes, 1); // variant: a device's image
    appendBig64(bytes, contents.sectors);
    bytes.append(12, '\0'); // reserved
    return bytes;
}

} // namespace

std::string udifTail(const UdifContents& contents) {
    const std::string list = propertyList(blockTable(contents));
    return list + trailer(contents, list.size());
}

} // namespace join::tools
