#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace join::platform::hdiutil {

/// One file, folder or link as listed by 7zz. Nothing has been checked: names and link texts may be hostile.
struct ListedEntry {
    std::string path;
    bool isFolder = false;
    std::uint64_t size = 0;     ///< in bytes, of what 7zz outputs for it
    std::optional<mode_t> mode; ///< type and permissions, if the volume has them
    std::optional<std::time_t> modified;
    std::string linkText; ///< if the listing shows it; otherwise 7zz outputs it as the link's contents
    std::string comment;
};

struct Listing {
    std::vector<std::string> types; ///< from the outermost to the innermost; one, unless 7zz looked further
    std::vector<std::string> volumeNames; ///< of the volumes in an APFS container
    std::vector<ListedEntry> entries;
};

/// Parses the output of `7zz l -slt` (CPP/7zip/UI/Console/List.cpp in its source): lines "Name = value";
/// first those about the archives, outermost first, up to a line of ten hyphens; then one paragraph for each
/// entry, which begins with its Path. Only archives have values of several lines, enclosed in lines "{" and
/// "}". In all other values 7zz replaces line feeds by "_", so an image can only insert lines there; a second
/// line of hyphens shows that it did. Alternate streams are left out. Throws Exception for any other output,
/// and for more entries than the maximum.
Listing parseListing(std::string_view text, std::size_t maximumEntries);

} // namespace join::platform::hdiutil
