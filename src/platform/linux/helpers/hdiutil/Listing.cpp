#include "platform/linux/helpers/hdiutil/Listing.h"

#include "platform/Exception.h"

#include <array>
#include <charconv>
#include <map>
#include <sys/stat.h>

namespace join::platform::hdiutil {

namespace {

using Fields = std::map<std::string_view, std::string_view>;

constexpr std::string_view separator = "----------";

struct Field {
    std::string_view name;
    std::string_view value;
};

[[noreturn]] void refuse() { throw Exception("the listing of the image cannot be understood"); }

std::string_view takeLine(std::string_view& text) {
    const auto end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return line;
}

std::optional<Field> fieldIn(std::string_view line, std::string_view separator) {
    const auto place = line.find(separator);
    if (place == std::string_view::npos)
        return std::nullopt;
    return Field{line.substr(0, place), line.substr(place + separator.size())};
}

std::uint64_t sizeIn(std::string_view text) {
    std::uint64_t size = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), size);
    if (error != std::errc() || end != text.data() + text.size())
        refuse();
    return size;
}

/// Reads "-rwxr-xr-x". An "s" or "t" stands for an execute bit and a bit that our volumes do not get.
std::optional<mode_t> modeIn(std::string_view text) {
    constexpr std::string_view letters = "-dlcbps";
    constexpr std::array<mode_t, letters.size()> types{S_IFREG, S_IFDIR, S_IFLNK, S_IFCHR,
                                                       S_IFBLK, S_IFIFO, S_IFSOCK};
    constexpr std::string_view pattern = "?rwxrwxrwx";
    const auto type = letters.find(text.substr(0, 1));
    if (text.size() != pattern.size() || type == std::string_view::npos)
        return std::nullopt;
    mode_t mode = 0;
    for (std::size_t place = 1; place < text.size(); ++place) {
        const bool isSet = text[place] == pattern[place] || text[place] == 's' || text[place] == 't';
        mode = mode << 1U | (isSet ? 1U : 0U);
    }
    return mode | types.at(type);
}

/// Reads "2026-11-22 22:45:46", in UTC, ignoring any fraction.
std::optional<std::time_t> timeIn(std::string_view text) {
    std::tm broken{};
    if (::strptime(std::string(text).c_str(), "%Y-%m-%d %H:%M:%S", &broken) == nullptr)
        return std::nullopt;
    return ::timegm(&broken);
}

/// Reads the lines up to the one of ten hyphens.
void takeArchives(std::string_view& text, Listing& listing) {
    constexpr std::string_view volumeName = "volume_name: ";
    bool isInBraces = false;
    for (std::string_view line = takeLine(text); line != separator; line = takeLine(text)) {
        if (text.empty())
            refuse();
        if (isInBraces && line.starts_with(volumeName))
            listing.volumeNames.emplace_back(line.substr(volumeName.size()));
        if (line == "{" || line == "}")
            isInBraces = line == "{";
        const auto field = fieldIn(line, " = ");
        if (!isInBraces && field && field->name == "Type")
            listing.types.emplace_back(field->value);
    }
}

/// Reads the lines up to the next empty one.
Fields takeParagraph(std::string_view& text) {
    Fields fields;
    for (std::string_view line = takeLine(text); !line.empty(); line = takeLine(text)) {
        if (line == separator)
            refuse();
        const auto field = fieldIn(line, " =");
        if (!field)
            continue;
        if (fields.empty() && field->name != "Path")
            refuse();
        const std::string_view value = field->value.substr(field->value.starts_with(' ') ? 1 : 0);
        if (!fields.emplace(field->name, value).second)
            refuse();
    }
    return fields;
}

std::string_view valueOf(const Fields& fields, std::string_view name) {
    const auto found = fields.find(name);
    return found == fields.end() ? std::string_view() : found->second;
}

ListedEntry entryOf(const Fields& fields) {
    ListedEntry entry{.path = std::string(valueOf(fields, "Path")),
                      .isFolder = valueOf(fields, "Folder") == "+",
                      .size = 0,
                      .mode = modeIn(valueOf(fields, "Mode")),
                      .modified = timeIn(valueOf(fields, "Modified")),
                      .linkText = std::string(valueOf(fields, "Symbolic Link")),
                      .comment = std::string(valueOf(fields, "Comment"))};
    // APFS volumes are listed without this line.
    if (!fields.contains("Folder"))
        entry.isFolder = (entry.mode.value_or(0) & S_IFMT) == S_IFDIR;
    if (!entry.isFolder)
        entry.size = sizeIn(valueOf(fields, "Size"));
    return entry;
}

} // namespace

Listing parseListing(std::string_view text, std::size_t maximumEntries) {
    Listing listing;
    takeArchives(text, listing);
    while (!text.empty()) {
        const Fields fields = takeParagraph(text);
        if (fields.empty() || valueOf(fields, "Alternate Stream") == "+")
            continue;
        if (listing.entries.size() == maximumEntries)
            throw Exception("the volume holds too many files");
        listing.entries.push_back(entryOf(fields));
    }
    return listing;
}

} // namespace join::platform::hdiutil
