#include "platform/linux/helpers/hdiutil/Crc32.h"

#include <array>
#include <cstddef>

namespace join::platform::hdiutil {

namespace {

constexpr std::size_t stride = 16;

using Table = std::array<std::uint32_t, 256>;

/// tables[n][b] is what byte b does to the register when n more bytes follow it, so that sixteen bytes
/// are one step.
constexpr std::array<Table, stride> makeTables() {
    std::array<Table, stride> made{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t value = byte;
        for (int bit = 0; bit < 8; ++bit)
            value = value >> 1U ^ ((value & 1U) != 0 ? 0xEDB88320U : 0U);
        made[0][byte] = value;
    }
    for (std::size_t n = 1; n < stride; ++n) {
        for (std::size_t byte = 0; byte < 256; ++byte)
            made[n][byte] = made[n - 1][byte] >> 8U ^ made[0][made[n - 1][byte] & 0xFFU];
    }
    return made;
}

constexpr std::array<Table, stride> tables = makeTables();

/// Four bytes, the first one lowest, as the register holds them.
std::uint32_t wordAt(std::string_view bytes, std::size_t place) {
    const auto byte = [&](std::size_t n) {
        return std::uint32_t{static_cast<unsigned char>(bytes[place + n])};
    };
    return byte(0) | byte(1) << 8U | byte(2) << 16U | byte(3) << 24U;
}

/// What four bytes do to the register when so many more follow them.
std::uint32_t effectOf(std::uint32_t word, std::size_t more) {
    return tables[more + 3][word & 0xFFU] ^ tables[more + 2][word >> 8U & 0xFFU] ^
           tables[more + 1][word >> 16U & 0xFFU] ^ tables[more][word >> 24U];
}

} // namespace

std::uint32_t crc32(std::uint32_t before, std::string_view bytes) {
    std::uint32_t value = ~before;
    for (; bytes.size() >= stride; bytes.remove_prefix(stride))
        value = effectOf(value ^ wordAt(bytes, 0), 12) ^ effectOf(wordAt(bytes, 4), 8) ^
                effectOf(wordAt(bytes, 8), 4) ^ effectOf(wordAt(bytes, 12), 0);
    for (const char byte : bytes)
        value = value >> 8U ^ tables[0][(value ^ static_cast<unsigned char>(byte)) & 0xFFU];
    return ~value;
}

} // namespace join::platform::hdiutil
