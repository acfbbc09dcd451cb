#include "platform/linux/helpers/register-scheme/DesktopEntry.h"

#include "platform/linux/helpers/register-scheme/DesktopEntryTemplate.h"
#include "platform/linux/system/LogText.h"

#include <string_view>

namespace join::platform {

namespace {

bool canStandInAFile(std::string_view path) {
    return path.find_first_of("\n\t") == std::string_view::npos && escapedForLog(path) == path;
}

std::string escaped(std::string_view text, std::string_view special, char escape) {
    std::string result;
    for (const char c : text) {
        if (special.find(c) != std::string_view::npos)
            result += escape;
        result += c;
    }
    return result;
}

/// Encodes a value of the type string. Its other escapes are for control characters.
std::string stringValue(std::string_view text) { return escaped(text, "\\", '\\'); }

/// Returns the path as the beginning of a command line. Only paths that need quotes get them: some launchers
/// split at blanks and do not understand quotes. GLib looks for the program before it turns "%%" into "%", so
/// in that case env is the program.
std::string command(std::string_view path) {
    std::string word = escaped(path, "%", '%');
    if (word.find_first_of(" \"'\\><~|&;$*?#()`") != std::string::npos)
        word = std::string("\"").append(escaped(word, "\"`$\\", '\\')).append("\"");
    return word.find('%') == std::string::npos ? word : "/usr/bin/env " + word;
}

} // namespace

std::optional<std::string> desktopEntryText(const std::string& executable, const std::string& icon) {
    if (!canStandInAFile(executable) || !canStandInAFile(icon) || executable.find('=') != std::string::npos)
        return std::nullopt;
    return desktopEntryFile(stringValue(command(executable)), stringValue(executable), stringValue(icon));
}

} // namespace join::platform
