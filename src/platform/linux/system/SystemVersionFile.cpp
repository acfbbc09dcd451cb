#include "platform/linux/system/SystemVersionFile.h"

#include "platform/Application.h"
#include "platform/Utf8.h"
#include "platform/linux/files/Folders.h"

#include <glib.h>

#include <algorithm>
#include <regex>

namespace join::platform {

namespace {

/// Returns what the distribution's os-release file says, or nothing.
std::string release(const char* name) {
    g_autofree char* value = g_get_os_info(name);
    return value ? value : "";
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

std::string systemVersionList(const std::string& name, const std::string& version) {
    std::string list = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
)";
    list += "\t<key>ProductName</key>\n\t<string>" + escaped(name) + "</string>\n";
    list += "\t<key>ProductVersion</key>\n\t<string>" + reportedVersion(version) + "</string>\n";
    list += "</dict>\n</plist>\n";
    return list;
}

bool makeSystemVersionFile(FileManager& files) {
    return !files.read(systemVersionPath).value_or("").empty() || // a power cut can have left an empty one
           (files.createFolder(parentOf(systemVersionPath)) &&
            files.create(systemVersionPath,
                         systemVersionList(release(G_OS_INFO_KEY_NAME), release(G_OS_INFO_KEY_VERSION_ID))));
}

} // namespace join::platform
