#pragma once

#include <string_view>

namespace join::platform {

// Both files are read line by line as xdg-mime reads and writes them, without the blanks and carriage returns
// that other readers pass over. What is not found then, the tools write anew as it is found.

/// Whether the text of a mimeapps.list names the desktop entry as the first default for the type. Of several
/// lines for the type the first one counts. Format: MIME Applications Associations Specification 1.0.
bool isFirstDefault(std::string_view mimeAppsList, std::string_view type, std::string_view entryId);

/// Whether the text of a mimeinfo.cache, as update-desktop-database writes it, names the entry for the type.
bool isInMimeCache(std::string_view mimeInfoCache, std::string_view type, std::string_view entryId);

} // namespace join::platform
