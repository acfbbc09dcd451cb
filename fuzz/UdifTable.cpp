// The tables of chunks in a disk image. The target makes the property list around them:
//
//   input = size of the data, four bytes *( length, two bytes; table )

#include "platform/linux/helpers/hdiutil/UdifTable.h"
#include "Target.h"
#include "platform/Exception.h"

#include <algorithm>
#include <string>

namespace join::fuzz {

namespace {

using namespace platform::hdiutil;

std::string base64(std::string_view bytes) {
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t bit = 0; bit < 8 * bytes.size(); bit += 6) {
        const std::string pair{bytes[bit / 8], bit / 8 + 1 < bytes.size() ? bytes[bit / 8 + 1] : '\0'};
        text += digits[bigEndian(pair, 0, 2) >> (10 - bit % 8) & 63U];
    }
    return text;
}

void requireSound(const UdifTable& table, const Extent& data) {
    std::uint64_t place = 0;
    std::uint64_t bytes = 0;
    std::vector<Extent> stored;
    for (const UdifChunk& chunk : table.chunks) {
        require(chunk.place.offset == place && chunk.place.size > 0);
        place += chunk.place.size;
        if (!isStored(chunk.kind))
            continue;
        require(std::max(chunk.place.size, chunk.stored.size) <= UdifChunk::maximumSize);
        require(chunk.stored.offset >= data.offset && chunk.stored.size <= data.size &&
                chunk.stored.offset - data.offset <= data.size - chunk.stored.size);
        stored.push_back(chunk.stored);
        bytes += chunk.place.size;
    }
    require(place <= UdifTable::maximumSize && bytes == table.bytes);
    for (const UdifPartition& partition : table.partitions)
        place -= partition.size;
    require(place == 0);
    std::ranges::sort(stored, {}, &Extent::offset);
    for (std::size_t n = 1; n < stored.size(); ++n)
        require(stored[n - 1].offset + stored[n - 1].size <= stored[n].offset);
}

} // namespace

void tryOut(std::string_view input) {
    const auto take = [&](std::size_t size) {
        const std::string_view bytes = input.substr(0, size);
        input.remove_prefix(bytes.size());
        return bytes;
    };
    UdifTrailer trailer;
    trailer.data = {4096, bigEndian(take(4), 0, 4)};
    std::string list = "<plist><dict><key>resource-fork</key><dict><key>blkx</key><array>";
    while (!input.empty())
        list += "<dict><key>Data</key><data>" + base64(take(bigEndian(take(2), 0, 2))) + "</data></dict>";
    list += "</array></dict></dict></plist>";
    try {
        if (const auto table = parseUdifTable(list, trailer))
            requireSound(*table, trailer.data);
    } catch (const platform::Exception& refusal) {
        require(*refusal.what() != '\0');
    }
}

} // namespace join::fuzz
