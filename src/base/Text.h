#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace join {

/// A text that may be absent, which is not the same as empty. All text is UTF-8, and its characters are code
/// points.
using Text = std::optional<std::string>;

/// How an absent text is written.
inline constexpr std::string_view absentText = "(null)";

/// Whether the text is there and holds something.
bool isFilled(const Text& text);

/// The pieces between the separators, empty ones included: always one more than there are separators. They
/// refer to the text given.
std::vector<std::string_view> split(std::string_view text, std::string_view separator);

/// The text without blanks at its ends: tab and every Unicode space separator (Zs), never line breaks.
std::string_view trimBlanks(std::string_view text);

/// The number of characters, counted no further than the limit.
std::size_t characterCount(std::string_view text, std::size_t limit);

/// What follows the first characters; nothing when there are fewer.
std::optional<std::string_view> dropCharacters(std::string_view text, std::size_t count);

/// The text without any occurrence of the needle, found from left to right.
std::string removingAll(std::string_view text, std::string_view needle);

/// Folder and name joined with exactly one separator.
std::string appendingPathComponent(std::string_view folder, std::string_view name);

/// What follows the last separator of a path, separators at its end aside.
std::string_view lastPathComponent(std::string_view path);

/// A path without its last component, and without a separator at its end unless it is the root.
std::string_view deletingLastPathComponent(std::string_view path);

} // namespace join
