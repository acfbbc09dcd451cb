#pragma once

#include "platform/Value.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>

namespace join {

/// Finds the information property list in a single-file executable: the section "__info_plist" of the segment
/// "__TEXT" of a 64-bit little-endian Mach-O image that begins with the file. The magic number is not
/// checked. Reads only the load commands, and nothing beyond the given bytes. Returns the section's data, or
/// nothing if there is no such section, or if a command, a section or the data extends past the end.
///
/// Layout after Apple's "OS X ABI Mach-O File Format Reference":
///   header, 32 bytes:   number of load commands at 16 (32 bits)
///   load command:       type at 0 (32 bits, 25 a 64-bit segment), size of the whole command at 4 (32 bits)
///   segment command:    name at 8 (16 bytes, padded with NUL), number of sections at 64 (32 bits),
///                       sections from 72
///   section, 80 bytes:  name at 0 (16 bytes, padded with NUL), data size at 40 (64 bits),
///                       data offset at 48 (32 bits)
std::optional<std::span<const std::byte>> embeddedPropertyList(std::span<const std::byte> file);

/// Returns the information property list of a bundle, or the one embedded in an executable file, or nothing
/// if there is none. A failure is logged.
std::optional<platform::Value> embeddedPlistV2(const std::string& path);

} // namespace join
