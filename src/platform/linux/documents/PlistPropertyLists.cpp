#include "platform/linux/documents/PlistPropertyLists.h"

#include "platform/linux/documents/PropertyListForms.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>

namespace join::platform {

namespace {

constexpr std::size_t maximumSize = std::size_t{1} << 20;

} // namespace

std::string dateText(double seconds) {
    constexpr double firstDate = -63'114'076'800; // 0001-01-01 00:00:00
    constexpr double lastDate = 252'423'993'599;  // 9999-12-31 23:59:59
    constexpr std::time_t beginning = 978'307'200;
    const std::time_t time =
        beginning + static_cast<std::time_t>(std::min(std::max(firstDate, seconds), lastDate));
    tm parts{};
    ::gmtime_r(&time, &parts);
    std::array<char, 96> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%02d +0000", parts.tm_year + 1900,
                  parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec);
    return text.data();
}

std::string dataText(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text = "<";
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text.append({digits[byte >> 4U], digits[byte & 0xFU]});
    }
    return text += '>';
}

std::optional<Value> PlistPropertyLists::parse(std::string_view bytes) {
    if (bytes.size() > maximumSize)
        return std::nullopt;
    if (bytes.starts_with("bplist00"))
        return parseBinaryPropertyList(bytes);
    // The XML declaration must be at the very beginning of the document.
    if (bytes.starts_with("\xEF\xBB\xBF"))
        bytes.remove_prefix(3);
    bytes.remove_prefix(std::min(bytes.find_first_not_of(" \t\r\n"), bytes.size()));
    return parseXmlPropertyList(bytes);
}

} // namespace join::platform
