#include "images/ChunkCoding.h"

#include "images/Numbers.h"

#include <algorithm>
#include <bzlib.h>
#include <stdexcept>
#include <string_view>
#include <zlib.h>

namespace join::tools {

namespace {

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
    constexpr int hundredsOfKilobytes = 3; // a block that holds a whole chunk
    auto size = static_cast<unsigned>(bytes.size() + bytes.size() / 100 + 600);
    std::string result(size, '\0');
    if (::BZ2_bzBuffToBuffCompress(result.data(), &size, bytes.data(), static_cast<unsigned>(bytes.size()),
                                   hundredsOfKilobytes, 0, 0) != BZ_OK)
        throw std::runtime_error("bzip2 cannot compress");
    result.resize(size);
    return result;
}

/// Apple Data Compression: a byte with the highest bit set gives the number of literal bytes that follow,
/// minus one.
std::string adcStored(std::string_view bytes) {
    constexpr std::size_t maximum = 128;
    std::string result;
    for (; !bytes.empty(); bytes.remove_prefix(std::min(maximum, bytes.size()))) {
        const std::string_view run = bytes.substr(0, maximum);
        result += static_cast<char>(0x80U | (run.size() - 1));
        result += run;
    }
    return result;
}

/// LZFSE with one block of the LZVN kind, all literal. 7zz cannot read the kind meant for incompressible
/// data.
std::string lzfseStored(std::string_view bytes) {
    constexpr std::size_t shortest = 16; // of a run that has its length in a byte of its own
    constexpr std::size_t longest = 271;
    std::string block;
    for (std::string_view rest = bytes; !rest.empty(); rest.remove_prefix(std::min(longest, rest.size()))) {
        const std::string_view run = rest.substr(0, longest);
        if (run.size() < shortest)
            block += static_cast<char>(0xE0U | run.size());
        else
            block += {'\xE0', static_cast<char>(run.size() - shortest)};
        block += run;
    }
    block += '\6' + std::string(7, '\0'); // the block's end
    std::string result = "bvxn";
    appendLittle(result, bytes.size(), 4);
    appendLittle(result, block.size(), 4);
    return result + block + "bvx$";
}

/// A number as an xz index holds it: seven bits a byte, the lowest first.
std::string xzNumber(std::uint64_t number) {
    std::string bytes;
    for (; number >= 0x80; number >>= 7U)
        bytes += static_cast<char>(0x80U | (number & 0x7FU));
    return bytes + static_cast<char>(number);
}

void appendCrc(std::string& bytes, std::string_view of) {
    appendLittle(bytes, ::crc32_z(0, reinterpret_cast<const Bytef*>(of.data()), of.size()), 4);
}

void pad(std::string& bytes) { bytes.resize((bytes.size() + 3) / 4 * 4); }

/// An xz stream of one block of LZMA2 chunks that hold the bytes uncompressed.
std::string xzStored(std::string_view bytes) {
    using namespace std::string_literals;
    constexpr std::size_t maximum = std::size_t{1} << 16;
    const std::string flags = "\0\1"s; // checks are CRC-32
    std::string stream = "\xFD"s + "7zXZ\0"s + flags;
    appendCrc(stream, flags);

    std::string block = "\2\0\x21\1\x16\0\0\0"s; // one filter, LZMA2, with a dictionary of 8 MiB
    appendCrc(block, block);
    char control = 1; // begin a dictionary
    for (std::string_view rest = bytes; !rest.empty(); control = 2) {
        const std::string_view run = rest.substr(0, maximum);
        block += {control, static_cast<char>((run.size() - 1) >> 8U), static_cast<char>(run.size() - 1)};
        block += run;
        rest.remove_prefix(run.size());
    }
    block += '\0';
    const std::size_t unpadded = block.size() + 4;
    pad(block);
    appendCrc(block, bytes);

    std::string index = "\0\1"s + xzNumber(unpadded) + xzNumber(bytes.size());
    pad(index);
    appendCrc(index, index);
    std::string footer;
    appendLittle(footer, index.size() / 4 - 1, 4);
    footer += flags;
    stream += block + index;
    appendCrc(stream, footer);
    return stream + footer + "YZ";
}

} // namespace

std::string codedChunk(ChunkKind kind, const std::string& bytes) {
    switch (kind) {
    case ChunkKind::zlib:
        return zlibCompressed(bytes);
    case ChunkKind::bzip2:
        return bzip2Compressed(bytes);
    case ChunkKind::adc:
        return adcStored(bytes);
    case ChunkKind::lzfse:
        return lzfseStored(bytes);
    case ChunkKind::lzma:
        return xzStored(bytes);
    default:
        return bytes;
    }
}

bool isStoredAsItIs(ChunkKind kind) {
    return kind == ChunkKind::adc || kind == ChunkKind::lzfse || kind == ChunkKind::lzma;
}

} // namespace join::tools
