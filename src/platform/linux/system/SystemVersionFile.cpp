#include "platform/linux/system/SystemVersionFile.h"

#include "platform/Application.h"
#include "platform/Utf8.h"
#include "platform/linux/files/Folders.h"

#include <algorithm>
#include <optional>
#include <regex>

namespace join::platform {

namespace {

constexpr std::size_t maximumOsReleaseSize = 65536;

bool isBlank(char character) { return character == ' ' || character == '\t' || character == '\r'; }

/// Removes the text up to the next separator, or all of it, from the front. Returns it.
std::string_view takeUntil(std::string_view& text, char separator) {
    const auto end = text.find(separator);
    const auto taken = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return taken;
}

/// Returns the text of one word as a shell reads it, or nothing if a quote or an escape is incomplete.
std::optional<std::string> unquoted(std::string_view word) {
    static constexpr std::string_view escapableInQuotes = "\"\\$`";
    std::string text;
    char quote = 0;
    for (std::size_t index = 0; index < word.size(); ++index) {
        const char character = word[index];
        if (quote == 0 && isBlank(character))
            break;
        if (character == '\\' && quote != '\'') {
            if (++index == word.size())
                return std::nullopt;
            if (quote != 0 && escapableInQuotes.find(word[index]) == std::string_view::npos)
                text += character;
            text += word[index];
        } else if (character == quote) {
            quote = 0;
        } else if (quote == 0 && (character == '"' || character == '\'')) {
            quote = character;
        } else {
            text += character;
        }
    }
    return quote == 0 ? std::optional(text) : std::nullopt;
}

/// Returns whether a character, given as UTF-8, is a control character or not allowed in XML.
bool isUnprintable(std::string_view character) {
    const auto first = static_cast<unsigned char>(character[0]);
    return first < 0x20 || first == 0x7F || (character >= "\xC2\x80" && character <= "\xC2\x9F") ||
           character == "\xEF\xBF\xBE" || character == "\xEF\xBF\xBF";
}

/// XML text (XML 1.0, 2.2 and 2.4), without unprintable characters and bytes that are not UTF-8.
std::string escaped(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::size_t length = utf8SequenceLength(text);
        const std::string_view character = text.substr(0, std::max<std::size_t>(length, 1));
        text.remove_prefix(character.size());
        if (length == 0 || isUnprintable(character))
            continue;
        if (character == "&")
            result += "&amp;";
        else if (character == "<")
            result += "&lt;";
        else if (character == ">")
            result += "&gt;";
        else
            result += character;
    }
    return result;
}

std::string reportedVersion(const std::string& version) {
    static const std::regex numbersWithDots("[0-9]{1,9}(\\.[0-9]{1,9}){0,2}");
    constexpr std::size_t longest = 29; // the regular expression must not see texts of any length
    const bool counts = version.size() <= longest && std::regex_match(version, numbersWithDots) &&
                        std::stoi(version) >= oldestSupported.major;
    return counts ? version : std::to_string(oldestSupported.major) + ".0";
}

} // namespace

SystemRelease parseOsRelease(std::string_view text) {
    SystemRelease release;
    text = text.substr(0, maximumOsReleaseSize);
    while (!text.empty()) {
        std::string_view line = takeUntil(text, '\n');
        while (!line.empty() && isBlank(line.front()))
            line.remove_prefix(1);
        const std::string_view name = takeUntil(line, '=');
        if (name != "NAME" && name != "VERSION_ID")
            continue;
        if (const auto value = unquoted(line))
            (name == "NAME" ? release.name : release.version) = *value;
    }
    return release;
}

std::string systemVersionList(const SystemRelease& release) {
    std::string list = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
)";
    list += "\t<key>ProductName</key>\n\t<string>" + escaped(release.name) + "</string>\n";
    list += "\t<key>ProductVersion</key>\n\t<string>" + reportedVersion(release.version) + "</string>\n";
    list += "</dict>\n</plist>\n";
    return list;
}

bool makeSystemVersionFile(FileManager& files, const std::vector<std::string>& osReleasePaths) {
    if (files.exists(systemVersionPath))
        return true;
    SystemRelease release;
    for (const std::string& path : osReleasePaths) {
        if (const auto text = files.read(path)) {
            release = parseOsRelease(*text);
            break;
        }
    }
    return files.createFolder(parentOf(systemVersionPath)) &&
           files.create(systemVersionPath, systemVersionList(release));
}

} // namespace join::platform
