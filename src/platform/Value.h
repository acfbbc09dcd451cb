#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace join::platform {

struct Member;

/// A JSON or property-list value: null, flag, number, text, list or dictionary. Members keep the order of the
/// document they come from, and a name that stands in it twice is there twice. Never nested deeper than
/// maximumValueDepth.
struct Value {
    using Array = std::vector<Value>;
    using Dictionary = std::vector<Member>;
    std::variant<std::monostate, bool, std::int64_t, double, std::string, Array, Dictionary> data;

    /// The text or dictionary that this value is, nullptr when it is of another kind.
    const std::string* text() const { return std::get_if<std::string>(&data); }
    const Dictionary* dictionary() const { return std::get_if<Dictionary>(&data); }

    /// The last member of that name; nullptr when there is none, or when this is not a dictionary.
    const Value* member(std::string_view name) const;
};

struct Member {
    std::string name;
    Value value;
};

/// The value as "%@" writes it into a line: a text as it is, 2.0 as 2, true as 1, null as "<null>"; lists and
/// dictionaries in one line, as "(a, b)" and "{name = a; }".
std::string describe(const Value& value);

/// Documents nested deeper are refused by their parsers: no honest one is, and every walk of a value may
/// recurse.
inline constexpr int maximumValueDepth = 512;

} // namespace join::platform
