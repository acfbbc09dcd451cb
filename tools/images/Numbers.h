#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace join::tools {

// Numbers as Apple's formats store them: the most significant byte first. An offset past the end throws
// std::out_of_range.

inline std::uint64_t readBig32(std::string_view bytes, std::size_t offset) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < 4; ++i)
        value = value << 8U | static_cast<unsigned char>(bytes.at(offset + i));
    return value;
}

inline void appendBig32(std::string& bytes, std::uint64_t value) {
    for (unsigned shift = 32; shift > 0; shift -= 8)
        bytes += static_cast<char>(value >> (shift - 8));
}

inline void appendBig64(std::string& bytes, std::uint64_t value) {
    appendBig32(bytes, value >> 32U);
    appendBig32(bytes, value);
}

/// That many bytes, the least significant first, as in partition tables and most other formats.
inline void appendLittle(std::string& bytes, std::uint64_t value, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i)
        bytes += static_cast<char>(value >> 8 * i);
}

} // namespace join::tools
