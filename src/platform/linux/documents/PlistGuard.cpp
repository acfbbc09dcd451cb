#include "platform/linux/documents/PlistGuard.h"

#include "platform/Value.h"
#include "platform/linux/documents/BinaryPlistGraph.h"

#include <algorithm>
#include <cstddef>

namespace join::platform {

namespace {

constexpr std::size_t maximumSize = std::size_t{1} << 20;
constexpr std::size_t maximumTags = 8192; // an element has two
constexpr std::string_view whiteSpace = " \t\r\n";

/// The length of the markup that the text begins with when the markup is one whose inside is no element, 0
/// when it is another, npos when it does not end.
std::size_t lengthOfOpaqueMarkup(std::string_view text) {
    struct Markup {
        std::string_view opening;
        std::string_view closing;
    };
    constexpr Markup kinds[] = {{"<!--", "-->"}, {"<![CDATA[", "]]>"}};
    for (const auto& [opening, closing] : kinds) {
        if (!text.starts_with(opening))
            continue;
        const auto end = text.find(closing, opening.size());
        return end == std::string_view::npos ? end : end + closing.size();
    }
    return 0;
}

/// Whether the tag, given without its "<", is one of an array or a dictionary.
bool isContainer(std::string_view tag) {
    const std::string_view name = tag.substr(0, tag.find_first_of(" \t\r\n/"));
    return name == "array" || name == "dict";
}

/// How many levels the tag goes down (1), up (-1) or neither (0).
int stepOf(std::string_view tag) {
    if (tag.starts_with('/'))
        return isContainer(tag.substr(1)) ? -1 : 0;
    return isContainer(tag) && !tag.ends_with('/') ? 1 : 0;
}

bool isReasonableXml(std::string_view text) {
    // A list that has been cut off lacks its last tag.
    const auto last = text.find_last_not_of(whiteSpace);
    if (last == std::string_view::npos || !text.substr(0, last + 1).ends_with("</plist>"))
        return false;

    int depth = 0;
    std::size_t tags = 0;
    for (auto at = text.find('<'); at != std::string_view::npos; at = text.find('<', at)) {
        if (++tags > maximumTags)
            return false;
        const std::string_view rest = text.substr(at);
        const auto opaque = lengthOfOpaqueMarkup(rest);
        const auto end = rest.find('>');
        if (opaque == std::string_view::npos || end == std::string_view::npos)
            return false;
        if (opaque == 0)
            depth += stepOf(rest.substr(1, end - 1));
        if (depth < 0 || depth > maximumValueDepth)
            return false;
        at += opaque == 0 ? end + 1 : opaque;
    }
    return true;
}

} // namespace

PlistForm plistFormOf(std::string_view bytes) {
    if (bytes.starts_with("bplist00"))
        return PlistForm::binary;
    if (bytes.starts_with("\xEF\xBB\xBF"))
        bytes.remove_prefix(3);
    bytes.remove_prefix(std::min(bytes.find_first_not_of(whiteSpace), bytes.size()));
    for (const std::string_view beginning : {"<?xml", "<!DOCTYPE plist", "<plist"})
        if (bytes.starts_with(beginning))
            return PlistForm::xml;
    return PlistForm::none;
}

bool isReasonablePropertyList(std::string_view bytes) {
    if (bytes.size() > maximumSize)
        return false;
    switch (plistFormOf(bytes)) {
    case PlistForm::xml:
        return isReasonableXml(bytes);
    case PlistForm::binary:
        return isReasonableBinaryPlist(bytes);
    case PlistForm::none:
        break;
    }
    return false;
}

} // namespace join::platform
