#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace join::platform::hdiutil {

/// One file, folder or link as 7zz lists it. Nothing here is checked: names and link texts may mean harm.
struct ListedEntry {
    std::string path;
    bool isFolder = false;
    std::uint64_t size = 0;     ///< in bytes, of what 7zz puts out for it
    std::optional<mode_t> mode; ///< type and permissions, where the volume holds them
    std::optional<std::time_t> modified;
    std::string linkText; ///< where the listing shows it; else what 7zz puts out for a link is its text
    std::string comment;
};

struct Listing {
    std::vector<std::string> types;       ///< from the outside to the inside; one unless 7zz looked further
    std::vector<std::string> volumeNames; ///< of those in an APFS container
    std::vector<ListedEntry> entries;
};

/// Parses what `7zz l -slt` prints (CPP/7zip/UI/Console/List.cpp in its source): lines "Name = value"; those
/// about the archives, outermost first, up to a line of ten hyphens; then one paragraph for each entry, which
/// begins with its Path. A value of several lines, which only archives have, stands between lines "{" and
/// "}". 7zz replaces line feeds in all other values by "_", so what an image says can make lines only there;
/// a second line of hyphens shows that it made too many. Alternate streams are left out. Throws Exception for
/// anything else, and for more entries than the maximum.
Listing parseListing(std::string_view text, std::size_t maximumEntries);

} // namespace join::platform::hdiutil
