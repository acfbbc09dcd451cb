#include "images/UdifWriter.h"

#include "images/ChunkCoding.h"

#include <algorithm>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <zlib.h>

namespace join::tools {

namespace {

constexpr std::size_t chunkSize = udifChunkSectors * udifSectorSize;

std::uint32_t crc(std::uint32_t before, std::string_view bytes) {
    if (bytes.empty())
        return before; // zlib would begin anew when given no bytes
    return static_cast<std::uint32_t>(
        ::crc32_z(before, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()));
}

} // namespace

void UdifWriter::beginPartition(const std::string& name) {
    flush();
    const UdifPartition* before = contents_.partitions.empty() ? nullptr : &contents_.partitions.back();
    contents_.partitions.push_back(
        {.name = name, .firstSector = before ? before->firstSector + before->sectors : 0, .chunks = {}});
}

void UdifWriter::append(std::string_view volume) {
    if (contents_.partitions.empty())
        beginPartition("whole disk (Apple_HFS : 0)");
    while (!volume.empty()) {
        const std::size_t taken = std::min(volume.size(), chunkSize - pending_.size());
        pending_ += volume.substr(0, taken);
        volume.remove_prefix(taken);
        if (pending_.size() == chunkSize)
            writeChunk();
    }
}

void UdifWriter::writeChunk() {
    if (!contents_.style.isListed) {
        store(ChunkKind::raw, pending_);
    } else if (pending_.find_first_not_of('\0') == std::string::npos) {
        store(ChunkKind::zero, {});
    } else {
        UdifPartition& partition = contents_.partitions.back();
        partition.crc = crc(partition.crc, pending_);
        const std::string coded = codedChunk(contents_.style.kind, pending_);
        if (coded.size() < pending_.size() || isStoredAsItIs(contents_.style.kind))
            store(contents_.style.kind, coded);
        else
            store(ChunkKind::raw, pending_);
    }
    pending_.clear();
}

void UdifWriter::store(ChunkKind kind, std::string_view bytes) {
    const std::uint64_t sectors = pending_.size() / udifSectorSize;
    UdifPartition& partition = contents_.partitions.back();
    std::vector<UdifChunk>& chunks = partition.chunks;
    if (kind == ChunkKind::zero && !chunks.empty() && chunks.back().kind == ChunkKind::zero)
        chunks.back().sectors += sectors;
    else
        chunks.push_back({kind, partition.sectors, sectors, contents_.dataSize, bytes.size()});
    partition.sectors += sectors;
    contents_.dataSize += bytes.size();
    contents_.dataCrc = crc(contents_.dataCrc, bytes);
    if (!out_.write(bytes.data(), static_cast<std::streamsize>(bytes.size())))
        throw std::runtime_error("cannot write the image");
}

void UdifWriter::flush() {
    if (pending_.size() % udifSectorSize != 0)
        throw std::runtime_error("a volume must fill its last sector");
    if (!pending_.empty())
        writeChunk();
}

void UdifWriter::finish() {
    flush();
    if (!(out_ << udifTail(contents_)))
        throw std::runtime_error("cannot write the image");
}

std::string udifOf(std::string_view volume, ChunkKind kind) {
    return udifOf({{"whole disk (Apple_HFS : 0)", std::string(volume)}}, {.kind = kind});
}

std::string udifOf(const std::vector<DiskPart>& disk, const UdifStyle& style) {
    std::ostringstream out;
    UdifWriter writer(out, style);
    for (const DiskPart& part : disk) {
        writer.beginPartition(part.name);
        writer.append(part.bytes);
    }
    writer.finish();
    return out.str();
}

} // namespace join::tools
