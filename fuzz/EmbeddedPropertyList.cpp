// An executable that may carry a property list.

#include "diag/EmbeddedPropertyList.h"
#include "Target.h"
#include "platform/linux/documents/PlistPropertyLists.h"

namespace join::fuzz {

void tryOut(std::string_view input) {
    const auto section = embeddedPropertyList(std::as_bytes(std::span(input)));
    if (!section)
        return;
    const std::string_view list(reinterpret_cast<const char*>(section->data()), section->size());
    require(liesIn(list, input));
    platform::PlistPropertyLists().parse(list);
}

} // namespace join::fuzz
