#pragma once

#include <cstddef>
#include <string_view>

namespace join::platform {

/// The length in bytes of the UTF-8 sequence (RFC 3629) that the text begins with; 0 when it begins with
/// none: an overlong form, a surrogate, a code point beyond U+10FFFF, a stray or a missing continuation byte,
/// or no byte at all.
std::size_t utf8SequenceLength(std::string_view text);

bool isUtf8(std::string_view text);

} // namespace join::platform
