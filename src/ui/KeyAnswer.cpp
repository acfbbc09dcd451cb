#include "ui/KeyAnswer.h"

#include "base/Text.h"

namespace join {

std::optional<std::string_view> keyValidity(std::string_view body) {
    const auto pieces = split(body, "<is-valid>");
    if (pieces.size() < 2)
        return std::nullopt;
    return pieces[1];
}

} // namespace join
