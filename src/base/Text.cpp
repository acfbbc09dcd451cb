#include "base/Text.h"

#include <algorithm>
#include <array>

namespace join {

namespace {

// Unicode general category Zs, and the tab.
constexpr std::array<std::string_view, 18> blanks = {"\t",           " ",
                                                     "\xC2\xA0",     "\xE1\x9A\x80",
                                                     "\xE2\x80\x80", "\xE2\x80\x81",
                                                     "\xE2\x80\x82", "\xE2\x80\x83",
                                                     "\xE2\x80\x84", "\xE2\x80\x85",
                                                     "\xE2\x80\x86", "\xE2\x80\x87",
                                                     "\xE2\x80\x88", "\xE2\x80\x89",
                                                     "\xE2\x80\x8A", "\xE2\x80\xAF",
                                                     "\xE2\x81\x9F", "\xE3\x80\x80"};

bool startsCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }

std::string_view withoutTrailingSeparators(std::string_view path) {
    while (path.size() > 1 && path.ends_with('/'))
        path.remove_suffix(1);
    return path;
}

} // namespace

bool isFilled(const Text& text) { return text && !text->empty(); }

std::vector<std::string_view> split(std::string_view text, std::string_view separator) {
    std::vector<std::string_view> pieces;
    for (std::size_t found = 0; (found = text.find(separator)) != std::string_view::npos;
         text.remove_prefix(found + separator.size()))
        pieces.push_back(text.substr(0, found));
    pieces.push_back(text);
    return pieces;
}

std::string_view trimBlanks(std::string_view text) {
    const auto leading = [&](std::string_view blank) { return text.starts_with(blank); };
    const auto trailing = [&](std::string_view blank) { return text.ends_with(blank); };
    for (auto blank = blanks.begin(); (blank = std::ranges::find_if(blanks, leading)) != blanks.end();)
        text.remove_prefix(blank->size());
    for (auto blank = blanks.begin(); (blank = std::ranges::find_if(blanks, trailing)) != blanks.end();)
        text.remove_suffix(blank->size());
    return text;
}

std::size_t characterCount(std::string_view text, std::size_t limit) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < text.size() && count < limit; ++i)
        count += startsCharacter(text[i]) ? 1 : 0;
    return count;
}

std::optional<std::string_view> dropCharacters(std::string_view text, std::size_t count) {
    std::size_t position = 0;
    for (; count > 0; --count) {
        if (position == text.size())
            return std::nullopt;
        do
            ++position;
        while (position < text.size() && !startsCharacter(text[position]));
    }
    return text.substr(position);
}

std::string removingAll(std::string_view text, std::string_view needle) {
    std::string kept;
    kept.reserve(text.size());
    for (const std::string_view piece : split(text, needle))
        kept += piece;
    return kept;
}

std::string appendingPathComponent(std::string_view folder, std::string_view name) {
    folder = withoutTrailingSeparators(folder);
    while (name.starts_with('/'))
        name.remove_prefix(1);
    std::string path(folder);
    if (!path.ends_with('/'))
        path += '/';
    return path.append(name);
}

std::string_view lastPathComponent(std::string_view path) {
    path = withoutTrailingSeparators(path);
    return path.substr(path.rfind('/') + 1); // npos + 1 is 0
}

std::string_view deletingLastPathComponent(std::string_view path) {
    path = withoutTrailingSeparators(path);
    const std::size_t separator = path.rfind('/');
    if (separator == std::string_view::npos)
        return {};
    return withoutTrailingSeparators(path.substr(0, std::max<std::size_t>(separator, 1)));
}

} // namespace join
