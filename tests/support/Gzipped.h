#pragma once

#include <zlib.h>

#include <cstddef>
#include <string>

namespace join::test {

/// How zlib wraps what it deflates.
enum Wrapping : int { raw = -MAX_WBITS, zlib = MAX_WBITS, gzip = MAX_WBITS + 16 };

inline std::string gzipped(const std::string& text, Wrapping wrapping = gzip) {
    z_stream stream{};
    deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, wrapping, MAX_MEM_LEVEL, Z_DEFAULT_STRATEGY);
    std::string bytes(deflateBound(&stream, text.size()), '\0');
    // zlib reads only.
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(bytes.data());
    stream.avail_out = static_cast<uInt>(bytes.size());
    deflate(&stream, Z_FINISH);
    bytes.resize(stream.total_out);
    deflateEnd(&stream);
    return bytes;
}

} // namespace join::test
