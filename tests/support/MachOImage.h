#pragma once

#include <concepts>
#include <cstdint>
#include <string>

namespace join::test {

/// Pieces of a 64-bit Mach-O image, right or wrong as the test needs them.

template <std::unsigned_integral Number>
std::string littleEndian(Number number) {
    std::string bytes;
    for (std::size_t i = 0; i < sizeof(Number); ++i)
        bytes += static_cast<char>(number >> (8 * i) & 0xFFU);
    return bytes;
}

inline std::string name16(std::string name) { return name.append(16 - name.size(), '\0'); }

inline std::string machHeader(std::uint32_t commands) {
    return std::string(16, 'h') + littleEndian(commands) + std::string(12, 'h');
}

inline std::string machSection(const std::string& name, std::uint64_t size, std::uint32_t offset) {
    return name16(name) + std::string(24, 's') + littleEndian(size) + littleEndian(offset) +
           std::string(28, 's');
}

/// A segment command that claims this size and this number of sections.
inline std::string machSegment(const std::string& name, std::uint32_t commandSize, std::uint32_t sectionCount,
                               const std::string& sections = "") {
    return littleEndian(25U) + littleEndian(commandSize) + name16(name) + std::string(40, 'c') +
           littleEndian(sectionCount) + std::string(4, 'c') + sections;
}

/// A whole image that carries a property list.
inline std::string machImage(const std::string& list, const std::string& segment = "__TEXT",
                             const std::string& section = "__info_plist") {
    return machHeader(1) + machSegment(segment, 152, 1, machSection(section, list.size(), 184)) + list;
}

inline std::string propertyList(const std::string& key, const std::string& text) {
    return "<plist version=\"1.0\"><dict><key>" + key + "</key><string>" + text + "</string></dict></plist>";
}

} // namespace join::test
