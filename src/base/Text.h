#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace join {

/// A text that may be absent, which is not the same as empty. All text is UTF-8, and a character is a code
/// point.
using Text = std::optional<std::string>;

/// How an absent text is written.
inline constexpr std::string_view absentText = "(null)";

/// Returns whether the text is present and not empty.
bool isFilled(const Text& text);

/// Returns the pieces between the separators, including empty ones: always one more than there are
/// separators. They refer to the given text.
std::vector<std::string_view> split(std::string_view text, std::string_view separator);

/// Returns the text without blanks at its ends: tabs and all Unicode space separators (Zs), but not line
/// breaks.
std::string_view trimBlanks(std::string_view text);

/// Returns the number of characters, but counts no further than the limit.
std::size_t characterCount(std::string_view text, std::size_t limit);

/// Returns what follows the first count characters, or nothing if there are fewer.
std::optional<std::string_view> dropCharacters(std::string_view text, std::size_t count);

/// Returns the text without any occurrence of the needle, searching from left to right.
std::string removingAll(std::string_view text, std::string_view needle);

/// Joins folder and name with exactly one separator.
std::string appendingPathComponent(std::string_view folder, std::string_view name);

/// Returns the last component of a path, ignoring trailing separators.
std::string_view lastPathComponent(std::string_view path);

/// Returns a path without its last component, and without a trailing separator unless it is the root.
std::string_view deletingLastPathComponent(std::string_view path);

} // namespace join
