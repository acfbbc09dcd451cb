#pragma once

#include "platform/linux/helpers/hdiutil/ImageKind.h"
#include "platform/linux/helpers/hdiutil/Listing.h"

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace join::platform::hdiutil {

/// What no volume that is worth mounting goes beyond.
struct VolumeLimits {
    std::size_t entries = 100'000;
    std::uint64_t bytes = std::uint64_t{4} << 30;
    std::size_t depth = 100; ///< folders within folders
};

enum class EntryKind {
    folder,
    file,
    link,
    hidden ///< of the file system's own: what 7zz puts out for it is thrown away
};

struct PlannedEntry {
    EntryKind kind;
    std::string path;       ///< below the volume's top folder; empty for that. Safe to make if not hidden
    std::uint64_t size = 0; ///< in bytes, of what 7zz puts out for it; 0 for a folder
    mode_t mode = 0;        ///< permissions, without set-user, set-group and sticky bits
    std::optional<std::time_t> modified;
    std::string linkText; ///< of a link whose size is 0
};

struct VolumePlan {
    std::string name;
    std::vector<PlannedEntry> entries; ///< in the order of the listing, which is that of 7zz's output
    std::uint64_t bytes = 0;           ///< that 7zz puts out for all of them
};

/// Decides what to make of a listing. Names are those of single things below the volume, each in a listed
/// folder, none twice: so nothing can be made outside or through a link. Throws Exception, with the reason,
/// when the volume is refused.
VolumePlan planVolume(const Listing& listing, ImageKind kind, const VolumeLimits& limits);

/// Whether a text is the name of one thing in a folder: not empty, "." or "..", UTF-8 without separators,
/// line feeds and NULs, and no longer than file systems take. Other control characters are nothing special: a
/// folder's icon on a Mac is named "Icon" and a carriage return.
bool isPlainName(std::string_view name);

} // namespace join::platform::hdiutil
