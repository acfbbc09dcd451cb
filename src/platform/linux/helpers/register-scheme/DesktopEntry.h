#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace join::platform {

/// What a desktop entry says about its program.
struct DesktopEntry {
    std::string executable; ///< absolute path
    std::string icon;       ///< absolute path, or the name of a theme icon
};

/// Returns the text of the entry's file, made from resources/desktop/com.tavo.join.desktop.in, or nothing if
/// it cannot contain one of the paths: one that is not UTF-8, contains a control character, or, for the
/// executable, an equals sign. Format: Desktop Entry Specification 1.5, "Possible value types" and "The Exec
/// key".
std::optional<std::string> desktopEntryText(const DesktopEntry& entry);

/// Returns whether the text may be a scheme or the name of an entry without ".desktop": letters, digits and
/// ".+_-", starting with a letter or digit.
bool isPlainName(std::string_view text);

} // namespace join::platform
