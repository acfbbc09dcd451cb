#pragma once

#include "platform/linux/helpers/hdiutil/Bytes.h"

#include <cstdint>
#include <optional>
#include <string>

namespace join::platform::hdiutil {

/// An ISO 9660 volume (ECMA-119) may contain its files twice: in a tree with modes, links and true names
/// (Rock Ridge, IEEE P1282) and in a tree without them ("Joliet Specification"). 7zz uses the second if it
/// exists.
struct IsoTree {
    std::string volumeName; ///< from the descriptor of the richer tree
    /// The offset in the image of the first byte of the poorer tree's descriptor; if endOfDescriptors is
    /// written there, 7zz uses the richer tree. Nothing if 7zz uses it anyway.
    std::optional<std::uint64_t> poorer;
};

/// Returns the richer tree of a volume. A volume without trees has no name.
IsoTree richerTree(const RandomAccess& image);

constexpr char endOfDescriptors = '\xFF';

} // namespace join::platform::hdiutil
