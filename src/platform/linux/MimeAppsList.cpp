#include "platform/linux/MimeAppsList.h"

namespace join::platform {

namespace {

/// Gives what comes before the separator, or everything, and takes it off the text.
std::string_view takeUpTo(char separator, std::string_view& text) {
    const auto end = text.find(separator);
    const std::string_view taken = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return taken;
}

/// The value of the first line for the type in the groups of that heading; empty when there is none.
std::string_view firstValue(std::string_view text, std::string_view heading, std::string_view type) {
    bool isInGroup = false;
    while (!text.empty()) {
        std::string_view line = takeUpTo('\n', text);
        if (line.starts_with('['))
            isInGroup = line.starts_with(heading);
        else if (isInGroup && line.starts_with(type) && line.substr(type.size()).starts_with('='))
            return line.substr(type.size() + 1);
    }
    return {};
}

} // namespace

bool isFirstDefault(std::string_view mimeAppsList, std::string_view type, std::string_view entryId) {
    std::string_view entries = firstValue(mimeAppsList, "[Default Applications]", type);
    return takeUpTo(';', entries) == entryId;
}

bool isInMimeCache(std::string_view mimeInfoCache, std::string_view type, std::string_view entryId) {
    std::string_view entries = firstValue(mimeInfoCache, "[MIME Cache]", type);
    while (!entries.empty())
        if (takeUpTo(';', entries) == entryId)
            return true;
    return false;
}

} // namespace join::platform
