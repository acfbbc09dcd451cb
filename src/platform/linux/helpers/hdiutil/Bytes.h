#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace join::platform::hdiutil {

/// Returns the big-endian number of that many bytes, at most eight, at that place, which must lie in the
/// text.
inline std::uint64_t bigEndian(std::string_view bytes, std::size_t place, std::size_t size) {
    std::uint64_t number = 0;
    for (const char byte : bytes.substr(place, size))
        number = number << 8U | static_cast<unsigned char>(byte);
    return number;
}

/// Returns the little-endian number at that place; otherwise like bigEndian().
inline std::uint64_t littleEndian(std::string_view bytes, std::size_t place, std::size_t size) {
    std::uint64_t number = 0;
    for (std::size_t i = size; i > 0; --i)
        number = number << 8U | static_cast<unsigned char>(bytes.at(place + i - 1));
    return number;
}

/// The unit of disks and their images, in bytes.
constexpr std::uint64_t sectorSize = 512;

/// Where something lies, in bytes.
struct Extent {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
};

/// Like read(2): fills part of the buffer and returns the number of bytes; 0 at the end. May throw Exception.
using ByteSource = std::function<std::size_t(char* buffer, std::size_t size)>;

/// The bytes of an image. Places and sizes are in bytes.
class RandomAccess {
public:
    virtual ~RandomAccess() = default;

    virtual std::uint64_t size() const = 0;

    /// Returns the bytes at a place; fewer, or none, beyond the end of the image. May throw Exception.
    virtual std::string read(std::uint64_t offset, std::size_t size) const = 0;
};

} // namespace join::platform::hdiutil
