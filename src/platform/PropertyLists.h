#pragma once

#include "platform/Value.h"

#include <optional>
#include <string_view>

namespace join::platform {

/// Property lists in XML ("-//Apple//DTD PLIST 1.0") and binary ("bplist00") form. Any thread.
class PropertyLists {
public:
    virtual ~PropertyLists() = default;

    /// Returns the value of a list. Returns nothing if the bytes are not a list, are cut off, or exceed the
    /// limits (a mebibyte, some thousand objects, maximumValueDepth levels). Dates, data and identifiers
    /// become texts.
    virtual std::optional<Value> parse(std::string_view bytes) = 0;
};

} // namespace join::platform
