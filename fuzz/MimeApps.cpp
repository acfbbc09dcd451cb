// The user's mimeapps.list, or the cache of the desktop entries: other programs write both.

#include "Target.h"
#include "platform/linux/MimeAppsList.h"

#include <string>

namespace join::fuzz {

void tryOut(std::string_view input) {
    using namespace platform;
    const std::string type = "x-scheme-handler/tavojoin";
    const std::string entry = "com.tavo.join.desktop";
    const std::string line = "\n" + type + "=";
    const std::string text = "\n" + std::string(input);
    require(!isFirstDefault(input, type, entry) || text.find(line + entry) != std::string::npos);
    require(!isInMimeCache(input, type, entry) || text.find(line) != std::string::npos);
    // What stands first counts, whatever follows.
    require(isFirstDefault("[Default Applications]" + line + entry + ";" + text, type, entry));
    require(!isFirstDefault("[Default Applications]" + line + "other.desktop" + text, type, entry));
    require(isInMimeCache("[MIME Cache]" + line + "other.desktop;" + entry + text, type, entry));
}

} // namespace join::fuzz
