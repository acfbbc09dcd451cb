#include "service/Printable.h"

namespace join::tools {

std::string printable(std::string_view text) {
    static constexpr std::string_view digits = "0123456789abcdef";
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\\') {
            result += "\\\\";
        } else if (byte >= 0x20 && byte < 0x7F) {
            result += c;
        } else {
            result += "\\x";
            result += digits[byte >> 4U];
            result += digits[byte & 0xFU];
        }
    }
    return result;
}

} // namespace join::tools
