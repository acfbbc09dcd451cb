#include "platform/linux/helpers/hdiutil/ChunkInflater.h"

#include "platform/Exception.h"

#include <algorithm>
#include <bzlib.h>
#include <cstdint>
#include <libdeflate.h>
#include <lzma.h>

namespace join::platform::hdiutil {

namespace {

constexpr std::uint64_t memoryForLzma = std::uint64_t{80}
                                        << 20; ///< its largest common dictionary takes 65 MiB

bool inflateBzip2(std::string_view stored, char* contents, std::size_t size) {
    auto filled = static_cast<unsigned>(size);
    const int result = ::BZ2_bzBuffToBuffDecompress(contents, &filled, const_cast<char*>(stored.data()),
                                                    static_cast<unsigned>(stored.size()), 0, 0);
    return result == BZ_OK && filled == size;
}

bool inflateXz(std::string_view stored, char* contents, std::size_t size) {
    std::uint64_t memory = memoryForLzma;
    std::size_t taken = 0;
    std::size_t filled = 0;
    return ::lzma_stream_buffer_decode(
               &memory, 0, nullptr, reinterpret_cast<const std::uint8_t*>(stored.data()), &taken,
               stored.size(), reinterpret_cast<std::uint8_t*>(contents), &filled, size) == LZMA_OK &&
           filled == size;
}

} // namespace

ChunkInflater::ChunkInflater() : zlib_(::libdeflate_alloc_decompressor(), ::libdeflate_free_decompressor) {
    if (!zlib_)
        throw Exception("there is no memory to inflate the image");
}

std::string_view ChunkInflater::inflate(ChunkKind kind, std::string_view stored, std::size_t size) {
    contents_.resize(std::max(contents_.size(), size));
    char* const contents = contents_.data();
    bool isWhole = false;
    if (kind == ChunkKind::zlib)
        isWhole = ::libdeflate_zlib_decompress(zlib_.get(), stored.data(), stored.size(), contents, size,
                                               nullptr) == LIBDEFLATE_SUCCESS;
    else if (kind == ChunkKind::bzip2)
        isWhole = inflateBzip2(stored, contents, size);
    else if (kind == ChunkKind::lzma)
        isWhole = inflateXz(stored, contents, size);
    if (!isWhole)
        throw Exception("the image is damaged: it cannot be inflated");
    return {contents, size};
}

} // namespace join::platform::hdiutil
