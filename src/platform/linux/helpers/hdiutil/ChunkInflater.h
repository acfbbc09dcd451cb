#pragma once

#include "platform/linux/helpers/hdiutil/UdifTable.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct libdeflate_decompressor;

namespace join::platform::hdiutil {

/// Inflates chunks one after the other. Every thread needs one of its own.
class ChunkInflater {
public:
    ChunkInflater();

    /// Returns the contents of a stored chunk, which are valid until the next call. Throws Exception unless
    /// they have exactly that size.
    std::string_view inflate(ChunkKind kind, std::string_view stored, std::size_t size);

private:
    std::unique_ptr<libdeflate_decompressor, void (*)(libdeflate_decompressor*)> zlib_;
    std::vector<char> contents_;
};

} // namespace join::platform::hdiutil
