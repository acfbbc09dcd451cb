// The web server's answer to the validation of a key.

#include "Target.h"
#include "ui/KeyAnswer.h"

namespace join::fuzz {

void tryOut(std::string_view input) {
    constexpr std::string_view tag = "<is-valid>";
    const auto validity = keyValidity(input);
    const auto place = input.find(tag);
    require(validity.has_value() == (place != std::string_view::npos));
    if (!validity)
        return;
    require(validity->data() == input.data() + place + tag.size() && liesIn(*validity, input));
    require(validity->find(tag) == std::string_view::npos);
}

} // namespace join::fuzz
