#include "platform/Utf8.h"

namespace join::platform {

namespace {

// The range of the second byte depends on the first (RFC 3629, section 4).
struct Lead {
    unsigned char first, last;
    std::size_t length;
    unsigned char secondFirst, secondLast;
};

constexpr Lead leads[] = {
    {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF}, {0xE1, 0xEC, 3, 0x80, 0xBF},
    {0xED, 0xED, 3, 0x80, 0x9F}, {0xEE, 0xEF, 3, 0x80, 0xBF}, {0xF0, 0xF0, 4, 0x90, 0xBF},
    {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F},
};

bool within(char byte, unsigned char first, unsigned char last) {
    const auto value = static_cast<unsigned char>(byte);
    return value >= first && value <= last;
}

} // namespace

std::size_t utf8SequenceLength(std::string_view text) {
    if (text.empty())
        return 0;
    if (within(text[0], 0x00, 0x7F))
        return 1;
    for (const Lead& lead : leads) {
        if (!within(text[0], lead.first, lead.last))
            continue;
        if (text.size() < lead.length || !within(text[1], lead.secondFirst, lead.secondLast))
            return 0;
        for (std::size_t i = 2; i < lead.length; ++i)
            if (!within(text[i], 0x80, 0xBF))
                return 0;
        return lead.length;
    }
    return 0;
}

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = utf8SequenceLength(text);
        if (length == 0)
            return false;
        text.remove_prefix(length);
    }
    return true;
}

} // namespace join::platform
