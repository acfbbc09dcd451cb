#pragma once

#include "platform/Value.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>

namespace join {

/// Where a single-file executable keeps its information property list: the section "__info_plist" of the
/// segment "__TEXT" of a 64-bit Mach-O image in little-endian byte order that begins with the file. The magic
/// number is not tested. Reads nothing beyond the bytes given, and of them only the load commands. Gives the
/// section's data; nothing when there is no such section, or when a command, a section or the data reaches
/// past the end.
///
/// Layout after Apple's "OS X ABI Mach-O File Format Reference":
///   header, 32 bytes:   number of load commands at 16 (32 bits)
///   load command:       type at 0 (32 bits, 25 a 64-bit segment), size of the whole command at 4 (32 bits)
///   segment command:    name at 8 (16 bytes, padded with NUL), number of sections at 64 (32 bits),
///                       sections from 72
///   section, 80 bytes:  name at 0 (16 bytes, padded with NUL), data size at 40 (64 bits),
///                       data offset at 48 (32 bits)
std::optional<std::span<const std::byte>> embeddedPropertyList(std::span<const std::byte> file);

/// The information property list of a bundle, or the one embedded in an executable file; nothing when it has
/// none. A failure is logged.
std::optional<platform::Value> embeddedPlistV2(const std::string& path);

} // namespace join
