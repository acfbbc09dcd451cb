#pragma once

#include "base/Text.h"

#include <optional>
#include <string_view>

namespace join {

/// What the answer to a key validation says: the text behind its first "<is-valid>", up to a further one if
/// there is any; nothing when it holds none.
inline std::optional<std::string_view> keyValidity(std::string_view body) {
    const auto pieces = split(body, "<is-valid>");
    if (pieces.size() < 2)
        return std::nullopt;
    return pieces[1];
}

} // namespace join
