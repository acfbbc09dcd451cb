// A property list, in XML or binary form.

#include "Target.h"
#include "platform/Utf8.h"
#include "platform/linux/documents/NlohmannJson.h"
#include "platform/linux/documents/PlistPropertyLists.h"

namespace join::fuzz {

void tryOut(std::string_view input) {
    const auto list = platform::PlistPropertyLists().parse(input);
    if (!list)
        return;
    platform::NlohmannJson json;
    const std::string text = json.serialise(*list);
    require(platform::isUtf8(text));
    // Its containers are containers in JSON too, and nested no deeper than either allows.
    if (text.starts_with('{') || text.starts_with('['))
        require(json.parse(text).has_value());
}

} // namespace join::fuzz
