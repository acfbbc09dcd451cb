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

[[noreturn]] void refuse() { throw Exception("the listing of the image cannot be understood"); }

std::string_view takeLine(std::string_view& text) {
    const auto end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return line;
}

/// Returns the name and the value in "Name = value" or "Name =", or nothing in another line.
std::optional<Fields::value_type> fieldIn(std::string_view line) {
    const auto place = line.find(" =");
    if (place == std::string_view::npos)
        return std::nullopt;
    const std::string_view value = line.substr(place + 2);
    return Fields::value_type(line.substr(0, place), value.substr(value.starts_with(' ') ? 1 : 0));
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
    constexpr std::array types{S_IFREG, S_IFDIR, S_IFLNK, S_IFCHR, S_IFBLK, S_IFIFO, S_IFSOCK};
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
        const auto field = fieldIn(line);
        if (!isInBraces && field && field->first == "Type")
            listing.types.emplace_back(field->second);
    }
}

/// Reads the lines up to the next empty one.
Fields takeParagraph(std::string_view& text) {
    Fields fields;
    for (std::string_view line = takeLine(text); !line.empty(); line = takeLine(text)) {
        if (line == separator)
            refuse();
        const auto field = fieldIn(line);
        if (!field)
            continue;
        if ((fields.empty() && field->first != "Path") || !fields.insert(*field).second)
            refuse();
    }
    return fields;
}

/// A value that is missing is empty.
ListedEntry entryOf(Fields& fields) {
    const auto mode = modeIn(fields["Mode"]);
    // APFS volumes are listed without this line.
    const bool isFolder = fields.contains("Folder") ? fields["Folder"] == "+" : S_ISDIR(mode.value_or(0));
    return {.path = std::string(fields["Path"]),
            .isFolder = isFolder,
            .size = isFolder ? 0 : sizeIn(fields["Size"]),
            .mode = mode,
            .modified = timeIn(fields["Modified"]),
            .linkText = std::string(fields["Symbolic Link"]),
            .comment = std::string(fields["Comment"])};
}

} // namespace

Listing parseListing(std::string_view text, std::size_t maximumEntries) {
    Listing listing;
    takeArchives(text, listing);
    while (!text.empty()) {
        Fields fields = takeParagraph(text);
        if (fields.empty() || fields["Alternate Stream"] == "+")
            continue;
        if (listing.entries.size() == maximumEntries)
            throw Exception("the volume holds too many files");
        listing.entries.push_back(entryOf(fields));
    }
    return listing;
}

} // namespace join::platform::hdiutil
