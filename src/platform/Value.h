#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace join::platform {

struct Member;

/// A JSON or property-list value: null, flag, number, text, list or dictionary. Members keep the order of
/// their document; a name that occurs there twice occurs here twice. Never nested deeper than
/// maximumValueDepth.
struct Value {
    using Array = std::vector<Value>;
    using Dictionary = std::vector<Member>;
    std::variant<std::monostate, bool, std::int64_t, double, std::string, Array, Dictionary> data;

    /// Return the value's text or dictionary, or nullptr if it is of another kind.
    const std::string* text() const { return std::get_if<std::string>(&data); }
    const Dictionary* dictionary() const { return std::get_if<Dictionary>(&data); }

    /// Returns the last member of that name, or nullptr if there is none or this is not a dictionary.
    const Value* member(std::string_view name) const;
};

struct Member {
    std::string name;
    Value value;
};

/// Returns the value as "%@" writes it: a text as it is, 2.0 as 2, true as 1, null as "<null>"; lists and
/// dictionaries on one line, as "(a, b)" and "{name = a; }".
std::string describe(const Value& value);

/// Parsers refuse documents that are nested deeper: no honest one is. So every traversal of a value may
/// recurse.
inline constexpr int maximumValueDepth = 512;

} // namespace join::platform
