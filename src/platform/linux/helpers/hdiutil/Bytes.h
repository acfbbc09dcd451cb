#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace join::platform::hdiutil {

/// A big-endian number of that many bytes, at most eight, at that place. The place must lie in the text.
inline std::uint64_t bigEndian(std::string_view bytes, std::size_t place, std::size_t size) {
    std::uint64_t number = 0;
    for (const char byte : bytes.substr(place, size))
        number = number << 8U | static_cast<unsigned char>(byte);
    return number;
}

/// The same with the least significant byte first.
inline std::uint64_t littleEndian(std::string_view bytes, std::size_t place, std::size_t size) {
    std::uint64_t number = 0;
    for (std::size_t i = size; i > 0; --i)
        number = number << 8U | static_cast<unsigned char>(bytes.at(place + i - 1));
    return number;
}

/// Where something lies, in bytes.
struct Extent {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
};

/// Gives the bytes at a place of the image; fewer, or none, where the image ends. May throw Exception.
class RandomAccess {
public:
    RandomAccess() = default;
    virtual ~RandomAccess() = default;
    RandomAccess(const RandomAccess&) = delete;
    RandomAccess& operator=(const RandomAccess&) = delete;

    virtual std::uint64_t size() const = 0;
    virtual std::string read(std::uint64_t offset, std::size_t size) const = 0;
};

} // namespace join::platform::hdiutil
