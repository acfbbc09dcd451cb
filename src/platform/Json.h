#pragma once

#include "platform/Value.h"

#include <optional>
#include <string>
#include <string_view>

namespace join::platform {

/// JSON documents (RFC 8259). Any thread.
class Json {
public:
    virtual ~Json() = default;

    /// The document, which is an object or an array at its top; nothing for bytes that are no such document,
    /// that are not UTF-8 or that are nested deeper than maximumValueDepth. Numbers beyond 64 bits become
    /// doubles.
    virtual std::optional<Value> parse(std::string_view document) = 0;

    /// Compact text without blanks or line breaks, members in their order. Bytes of a text that are not UTF-8
    /// come out as U+FFFD.
    virtual std::string serialise(const Value& value) = 0;
};

} // namespace join::platform
