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

    /// Returns the value of a document with an object or an array at the top. Returns nothing if the bytes
    /// are not such a document, not UTF-8, or nested deeper than maximumValueDepth. Numbers beyond 64 bits
    /// become doubles.
    virtual std::optional<Value> parse(std::string_view document) = 0;

    /// Returns compact text without blanks or line breaks, members in order. Invalid UTF-8 becomes U+FFFD.
    virtual std::string serialise(const Value& value) = 0;
};

} // namespace join::platform
