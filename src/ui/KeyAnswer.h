#pragma once

#include "base/Text.h"

#include <optional>
#include <string_view>

namespace join {

/// Returns the verdict in the answer to a key validation: the text between the first "<is-valid>" and the
/// next one, or the end; nothing if there is no "<is-valid>".
inline std::optional<std::string_view> keyValidity(std::string_view body) {
    const auto pieces = split(body, "<is-valid>");
    if (pieces.size() < 2)
        return std::nullopt;
    return pieces[1];
}

} // namespace join
