#pragma once

#include <cstdint>
#include <string_view>

namespace join::platform::hdiutil {

/// The CRC-32 of ISO 3309 over some bytes, going on from that of those before them (0 for none).
std::uint32_t crc32(std::uint32_t before, std::string_view bytes);

} // namespace join::platform::hdiutil
