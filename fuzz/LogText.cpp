// A log message that holds what a server, a URL or a file said.

#include "platform/linux/system/LogText.h"
#include "Target.h"
#include "platform/Utf8.h"

namespace join::fuzz {

void tryOut(std::string_view input) {
    const std::string line = platform::escapedForLog(input);
    require(platform::isUtf8(line) && platform::escapedForLog(line) == line);
    for (std::size_t i = 0; i < line.size(); ++i) {
        const auto byte = static_cast<unsigned char>(line[i]);
        require((byte >= 0x20 && byte != 0x7F) || byte == '\n' || byte == '\t');
        require(byte != 0xC2 || static_cast<unsigned char>(line.at(i + 1)) >= 0xA0);
    }
}

} // namespace join::fuzz
