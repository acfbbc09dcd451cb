#include "platform/linux/system/LogText.h"

#include "platform/Utf8.h"

#include <algorithm>

namespace join::platform {

namespace {

bool isPlain(std::string_view character) {
    const auto first = static_cast<unsigned char>(character[0]);
    if (character.size() == 1)
        return first == '\n' || first == '\t' || (first >= 0x20 && first != 0x7F);
    return first != 0xC2 || static_cast<unsigned char>(character[1]) >= 0xA0; // U+0080 to U+009F
}

void appendEscaped(std::string& line, std::string_view bytes) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        line.append({'\\', 'x', digits[byte >> 4U], digits[byte & 0xFU]});
    }
}

} // namespace

std::string escapedForLog(std::string_view message) {
    std::string line;
    line.reserve(message.size());
    while (!message.empty()) {
        const std::size_t length = utf8SequenceLength(message);
        const std::string_view next = message.substr(0, std::max<std::size_t>(length, 1));
        if (length > 0 && isPlain(next))
            line.append(next);
        else
            appendEscaped(line, next);
        message.remove_prefix(next.size());
    }
    return line;
}

} // namespace join::platform
