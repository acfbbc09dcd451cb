#pragma once

#include "platform/linux/hdiutil/Bytes.h"

#include <cstdint>
#include <optional>

namespace join::platform::hdiutil {

/// An ISO 9660 volume may hold its files twice: in one tree with modes, links and true names (Rock Ridge,
/// IEEE P1282) and in one without (Joliet). 7zz takes the second if there is one. Gives the place in the
/// image of the byte that begins its descriptor; with endOfDescriptors there the first tree is taken. Nothing
/// when there is no choice.
std::optional<std::uint64_t> placeOfPoorerTree(const RandomAccess& image);

constexpr char endOfDescriptors = '\xFF';

} // namespace join::platform::hdiutil
