#pragma once

#include "platform/linux/helpers/hdiutil/Bytes.h"

#include <cstdint>
#include <optional>
#include <string>

namespace join::platform::hdiutil {

/// An ISO 9660 volume (ECMA-119) may hold its files twice: in one tree with modes, links and true names (Rock
/// Ridge, IEEE P1282) and in one without ("Joliet Specification"). 7zz takes the second if there is one.
struct IsoTree {
    std::string volumeName; ///< by the descriptor of the richer tree
    /// The place in the image of the byte that begins the descriptor of the poorer tree; with
    /// endOfDescriptors there 7zz takes the richer one. Nothing when it does so anyway.
    std::optional<std::uint64_t> poorer;
};

/// The richer tree of a volume. One without any has no name.
IsoTree richerTree(const RandomAccess& image);

constexpr char endOfDescriptors = '\xFF';

} // namespace join::platform::hdiutil
