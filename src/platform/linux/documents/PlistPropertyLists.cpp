#include "platform/linux/documents/PlistPropertyLists.h"

#include "platform/linux/documents/PropertyListForms.h"

#include <algorithm>

namespace join::platform {

namespace {

constexpr std::size_t maximumListSize = std::size_t{1} << 20;

} // namespace

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
    if (bytes.size() > maximumListSize)
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
