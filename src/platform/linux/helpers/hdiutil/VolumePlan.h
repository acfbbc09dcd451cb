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

/// Limits that no volume worth mounting exceeds.
struct VolumeLimits {
    std::size_t entries = 100'000;
    std::uint64_t bytes = std::uint64_t{4} << 30;
    std::size_t depth = 100; ///< of nested folders
};

enum class EntryKind {
    folder,
    file,
    link,
    hidden ///< the file system's own: 7zz's output for it is discarded
};

struct PlannedEntry {
    EntryKind kind;
    std::string path;       ///< relative to the top folder (empty for that); safe to create unless hidden
    std::uint64_t size = 0; ///< in bytes, of 7zz's output for it; 0 for a folder
    mode_t mode = 0;        ///< permissions, without set-user, set-group and sticky bits
    std::optional<std::time_t> modified;
    std::string linkText; ///< of a link whose size is 0
};

struct VolumePlan {
    std::string name;
    std::vector<PlannedEntry> entries; ///< in the order of the listing, which is that of 7zz's output
    std::uint64_t bytes = 0;           ///< of 7zz's output for all of them
};

/// Decides what to make of a listing. Every path is a plain name below the volume, in a listed folder, and
/// unique, so nothing can be created outside the volume or through a link. Throws Exception with the reason
/// if the volume is refused.
VolumePlan planVolume(const Listing& listing, ImageKind kind, const VolumeLimits& limits);

/// Returns whether a text is the name of one thing in a folder: not empty, not "." or "..", UTF-8 without
/// separators, line feeds and NULs, and no longer than file systems allow. Other control characters are
/// allowed: on a Mac, a folder's icon is named "Icon" and a carriage return.
bool isPlainName(std::string_view name);

} // namespace join::platform::hdiutil
