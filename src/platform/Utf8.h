#pragma once

#include <cstddef>
#include <string_view>

namespace join::platform {

/// Returns the length in bytes of the UTF-8 sequence (RFC 3629) at the start of the text. Returns 0 if there
/// is none: an overlong form, a surrogate, a code point beyond U+10FFFF, a stray or a missing continuation
/// byte, or an empty text.
std::size_t utf8SequenceLength(std::string_view text);

bool isUtf8(std::string_view text);

} // namespace join::platform
