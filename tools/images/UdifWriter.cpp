#include "images/UdifWriter.h"

#include <algorithm>
#include <bzlib.h>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <zlib.h>

namespace join::tools {

namespace {

constexpr std::size_t chunkSize = udifChunkSectors * udifSectorSize;

std::string zlibCompressed(const std::string& bytes) {
    uLongf size = ::compressBound(bytes.size());
    std::string result(size, '\0');
    if (::compress2(reinterpret_cast<Bytef*>(result.data()), &size,
                    reinterpret_cast<const Bytef*>(bytes.data()), bytes.size(), Z_BEST_SPEED) != Z_OK)
        throw std::runtime_error("zlib cannot compress");
    result.resize(size);
    return result;
}

std::string bzip2Compressed(std::string bytes) {
    constexpr int hundredsOfKilobytes = 3; // a block that takes in a whole chunk
    auto size = static_cast<unsigned>(bytes.size() + bytes.size() / 100 + 600);
    std::string result(size, '\0');
    if (::BZ2_bzBuffToBuffCompress(result.data(), &size, bytes.data(), static_cast<unsigned>(bytes.size()),
                                   hundredsOfKilobytes, 0, 0) != BZ_OK)
        throw std::runtime_error("bzip2 cannot compress");
    result.resize(size);
    return result;
}

std::string compress(ChunkKind kind, const std::string& bytes) {
    switch (kind) {
    case ChunkKind::zlib:
        return zlibCompressed(bytes);
    case ChunkKind::bzip2:
        return bzip2Compressed(bytes);
    default:
        return bytes;
    }
}

std::uint32_t crc(std::uint32_t before, std::string_view bytes) {
    if (bytes.empty())
        return before; // zlib takes no bytes for a wish to begin anew
    return static_cast<std::uint32_t>(
        ::crc32_z(before, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()));
}

} // namespace

void UdifWriter::append(std::string_view volume) {
    while (!volume.empty()) {
        const std::size_t taken = std::min(volume.size(), chunkSize - pending_.size());
        pending_ += volume.substr(0, taken);
        volume.remove_prefix(taken);
        if (pending_.size() == chunkSize)
            writeChunk();
    }
}

void UdifWriter::writeChunk() {
    if (pending_.find_first_not_of('\0') == std::string::npos) {
        store(ChunkKind::zero, {});
    } else {
        contents_.volumeCrc = crc(contents_.volumeCrc, pending_);
        const std::string compressed = compress(kind_, pending_);
        if (compressed.size() < pending_.size())
            store(kind_, compressed);
        else
            store(ChunkKind::raw, pending_);
    }
    pending_.clear();
}

void UdifWriter::store(ChunkKind kind, std::string_view bytes) {
    const std::uint64_t sectors = pending_.size() / udifSectorSize;
    std::vector<UdifChunk>& chunks = contents_.chunks;
    if (kind == ChunkKind::zero && !chunks.empty() && chunks.back().kind == ChunkKind::zero)
        chunks.back().sectors += sectors;
    else
        chunks.push_back({kind, contents_.sectors, sectors, contents_.dataSize, bytes.size()});
    contents_.sectors += sectors;
    contents_.dataSize += bytes.size();
    contents_.dataCrc = crc(contents_.dataCrc, bytes);
    if (!out_.write(bytes.data(), static_cast<std::streamsize>(bytes.size())))
        throw std::runtime_error("cannot write the image");
}

void UdifWriter::finish() {
    if (pending_.size() % udifSectorSize != 0)
        throw std::runtime_error("a volume must fill its last sector");
    if (!pending_.empty())
        writeChunk();
    if (!(out_ << udifTail(contents_)))
        throw std::runtime_error("cannot write the image");
}

std::string udifOf(std::string_view volume, ChunkKind kind) {
    std::ostringstream out;
    UdifWriter writer(out, kind);
    writer.append(volume);
    writer.finish();
    return out.str();
}

} // namespace join::tools
