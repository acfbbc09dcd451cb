#include "platform/linux/helpers/hdiutil/UdifTable.h"

#include "platform/Exception.h"
#include "platform/linux/documents/PropertyListForms.h"

#include <algorithm>
#include <charconv>
#include <libdeflate.h>
#include <utility>

namespace join::platform::hdiutil {

namespace {

constexpr std::size_t headSize = 204;
constexpr std::size_t entrySize = 40;
constexpr std::uint64_t portion = std::uint64_t{1} << 20; ///< of a plain chunk, which may be of any size

enum OtherEntry : std::uint32_t { comment = 0x7FFFFFFE, end = 0xFFFFFFFF };

void require(bool condition) {
    if (!condition)
        throw Exception("the image is damaged: its table is wrong");
}

/// Returns the bytes of data in a property list: "<0fe1>".
std::string bytesOf(const Value* data) {
    const std::string* text = data ? data->text() : nullptr;
    require(text && text->starts_with('<') && text->size() % 2 == 0);
    std::string bytes;
    bytes.reserve(text->size() / 2);
    for (const char* digits = text->data() + 1; digits + 1 < text->data() + text->size(); digits += 2) {
        unsigned byte = 0;
        require(std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2);
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

class Reader {
public:
    explicit Reader(const UdifTrailer& trailer) : data_(trailer.data) {}

    /// Returns false if only 7zz may be able to read it.
    bool read(const Value& resource) {
        const std::string bytes = bytesOf(resource.member("Data"));
        require(bytes.size() >= headSize + entrySize && bytes.starts_with("mish") &&
                bigEndian(bytes, 200, 4) == (bytes.size() - headSize) / entrySize &&
                (bytes.size() - headSize) % entrySize == 0);
        const Value* name = resource.member("Name");
        table_.partitions.push_back({.name = name && name->text() ? *name->text() : std::string(),
                                     .size = sizeAt(bytes, 16),
                                     .crc = crcAt(bytes, 64)});
        const std::uint64_t begin = end_;
        const std::size_t last = bytes.size() - entrySize;
        for (std::size_t place = headSize; place < last; place += entrySize) {
            if (bigEndian(bytes, place, 4) == OtherEntry::comment)
                continue;
            require(sizeAt(bytes, place + 8) == end_ - begin);
            if (!add(bytes, place))
                return false;
        }
        require(bigEndian(bytes, last, 4) == OtherEntry::end &&
                table_.partitions.back().size == end_ - begin);
        return true;
    }

    UdifTable finish(const std::optional<std::uint32_t>& masterCrc) {
        std::string checksums;
        for (const UdifPartition& partition : table_.partitions) {
            for (int shift = 24; partition.crc && shift >= 0; shift -= 8)
                checksums += static_cast<char>(*partition.crc >> static_cast<unsigned>(shift));
        }
        require(!masterCrc || *masterCrc == ::libdeflate_crc32(0, checksums.data(), checksums.size()));
        std::vector<Extent> stored;
        for (const UdifChunk& chunk : table_.chunks) {
            if (isStored(chunk.kind))
                stored.push_back(chunk.stored);
        }
        std::ranges::sort(stored, {}, &Extent::offset);
        const auto overlap = std::ranges::adjacent_find(stored, [](const Extent& one, const Extent& other) {
            return one.offset + one.size > other.offset;
        });
        require(overlap == stored.end());
        return std::move(table_);
    }

private:
    /// Returns a number of sectors in bytes.
    static std::uint64_t sizeAt(std::string_view bytes, std::size_t place) {
        const std::uint64_t sectors = bigEndian(bytes, place, 8);
        require(sectors <= UdifTable::maximumSize / sectorSize);
        return sectors * sectorSize;
    }

    bool add(std::string_view bytes, std::size_t place) {
        UdifChunk chunk{.kind = static_cast<ChunkKind>(bigEndian(bytes, place, 4)),
                        .place = {end_, sizeAt(bytes, place + 16)},
                        .stored = {}};
        require(chunk.place.size <= UdifTable::maximumSize - end_);
        end_ += chunk.place.size;
        if (isStored(chunk.kind)) {
            const std::uint64_t base = bigEndian(bytes, 24, 8);
            const std::uint64_t offset = bigEndian(bytes, place + 24, 8);
            const std::uint64_t size = bigEndian(bytes, place + 32, 8);
            require(base <= data_.size && offset <= data_.size - base && size <= data_.size - base - offset);
            chunk.stored = {data_.offset + base + offset, size};
            table_.bytes += chunk.place.size;
        }
        if (chunk.kind == ChunkKind::plain) {
            require(chunk.stored.size == chunk.place.size);
            for (; chunk.place.size > portion; cutOff(chunk)) {
                table_.chunks.push_back(chunk);
                table_.chunks.back().place.size = table_.chunks.back().stored.size = portion;
            }
        }
        if (chunk.place.size > 0)
            table_.chunks.push_back(chunk);
        const bool isOurs =
            chunk.kind == ChunkKind::zlib || chunk.kind == ChunkKind::bzip2 || chunk.kind == ChunkKind::lzma;
        return chunk.kind == ChunkKind::plain || !isStored(chunk.kind) ||
               (isOurs && std::max(chunk.place.size, chunk.stored.size) <= UdifChunk::maximumSize);
    }

    static void cutOff(UdifChunk& chunk) {
        for (Extent* extent : {&chunk.place, &chunk.stored}) {
            extent->offset += portion;
            extent->size -= portion;
        }
    }

    Extent data_;
    UdifTable table_;
    std::uint64_t end_ = 0; ///< of all chunks so far
};

} // namespace

std::optional<UdifTable> parseUdifTable(std::string_view propertyList, const UdifTrailer& trailer) {
    const auto list = parseXmlPropertyList(propertyList.substr(0, UdifTable::maximumText));
    const Value* resources = list ? list->member("resource-fork") : nullptr;
    const Value* tables = resources ? resources->member("blkx") : nullptr;
    const auto* all = tables ? std::get_if<Value::Array>(&tables->data) : nullptr;
    if (!all)
        return std::nullopt;
    Reader reader(trailer);
    if (!std::ranges::all_of(*all, [&](const Value& resource) { return reader.read(resource); }))
        return std::nullopt;
    return reader.finish(trailer.masterCrc);
}

} // namespace join::platform::hdiutil
