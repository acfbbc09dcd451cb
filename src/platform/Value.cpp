#include "platform/Value.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
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

namespace {

/// Writes a number in the fewest digits that identify it; whole numbers have no fraction.
std::string describeNumber(double number) {
    constexpr double exact = 1e15; // whole numbers below this have exact digits
    if (std::trunc(number) == number && std::abs(number) < exact)
        return std::to_string(static_cast<std::int64_t>(number));
    std::array<char, 32> digits{};
    return {digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr};
}

struct Description {
    std::string operator()(std::monostate /*null*/) const { return "<null>"; }
    std::string operator()(bool flag) const { return flag ? "1" : "0"; }
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(double number) const { return describeNumber(number); }
    std::string operator()(const std::string& text) const { return text; }
    std::string operator()(const Value::Array& elements) const {
        std::string text;
        for (const Value& element : elements)
            text += (text.empty() ? "" : ", ") + describe(element);
        return "(" + text + ")";
    }
    std::string operator()(const Value::Dictionary& members) const {
        std::string text;
        for (const Member& member : members)
            text += member.name + " = " + describe(member.value) + "; ";
        return "{" + text + "}";
    }
};

} // namespace

std::string describe(const Value& value) { return std::visit(Description(), value.data); }

} // namespace join::platform
