#pragma once

#include <optional>
#include <string>

namespace join::platform {

/// Returns the text of the desktop entry of a program, made from resources/desktop/com.tavo.join.desktop.in. The
/// executable is an absolute path; the icon is one too, or the name of a theme icon. Returns nothing if the entry
/// cannot contain one of them: one that is not UTF-8, contains a control character, or, for the executable, an
/// equals sign. Format: Desktop Entry Specification 1.5, "Possible value types" and "The Exec key".
std::optional<std::string> desktopEntryText(const std::string& executable, const std::string& icon);

} // namespace join::platform
