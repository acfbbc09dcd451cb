#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace join::platform {

/// What a desktop entry says of the program that it starts.
struct DesktopEntry {
    std::string executable; ///< absolute path
    std::string icon;       ///< absolute path, or a name of the icon theme
};

/// The text of the entry's file, a filled-in resources/desktop/com.tavo.join.desktop.in. Nothing when a path
/// cannot stand in one: it is not UTF-8, holds a control character, or the executable's an equals sign.
/// Format: Desktop Entry Specification 1.5, "Possible value types" and "The Exec key".
std::optional<std::string> desktopEntryText(const DesktopEntry& entry);

/// Whether the text may be a scheme or the name of an entry without its ".desktop": letters, digits and
/// ".+_-", of which only a letter or digit comes first.
bool isPlainName(std::string_view text);

} // namespace join::platform
