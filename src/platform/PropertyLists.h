#pragma once

#include "platform/Value.h"

#include <optional>
#include <string_view>

namespace join::platform {

/// Property lists in XML ("-//Apple//DTD PLIST 1.0") and binary ("bplist00") form. Any thread.
class PropertyLists {
public:
    virtual ~PropertyLists() = default;

    /// The value of a list, nothing for bytes that are none, that are cut off, or that are out of all
    /// proportion (more than a mebibyte, more than some thousand objects, nested deeper than
    /// maximumValueDepth). Dates, data and identifiers come out as text.
    virtual std::optional<Value> parse(std::string_view bytes) = 0;
};

} // namespace join::platform
