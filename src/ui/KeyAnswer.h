#pragma once

#include <optional>
#include <string_view>

namespace join {

/// What the answer to a key validation says: the text behind its first "<is-valid>", up to a further one if
/// there is any; nothing when it holds none.
std::optional<std::string_view> keyValidity(std::string_view body);

} // namespace join
