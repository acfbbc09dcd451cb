#include "platform/Value.h"

#include <algorithm>
#include <ranges>

namespace join::platform {

const Value* Value::member(std::string_view name) const {
    const Dictionary* members = dictionary();
    if (!members)
        return nullptr;
    const auto found = std::find_if(members->rbegin(), members->rend(),
                                    [&](const Member& candidate) { return candidate.name == name; });
    return found == members->rend() ? nullptr : &found->value;
}

} // namespace join::platform
