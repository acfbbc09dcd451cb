#pragma once

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace join::fuzz {

/// What a target does with one input. An input that ends the process is a finding.
void tryOut(std::string_view input);

/// Ends the process, and says where, unless the condition holds.
inline void require(bool holds, const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    if (holds)
        return;
    std::fprintf(stderr, "%s:%d: this does not hold\n", file, line);
    std::abort();
}

/// Whether the part is a view into the whole.
inline bool liesIn(std::string_view part, std::string_view whole) {
    return part.data() >= whole.data() && part.data() + part.size() <= whole.data() + whole.size();
}

/// Removes and returns the text up to the next NUL, or all of it: inputs of several texts separate them so.
inline std::string_view takeText(std::string_view& input) {
    const std::string_view text = input.substr(0, input.find('\0'));
    input.remove_prefix(text.size() == input.size() ? text.size() : text.size() + 1);
    return text;
}

} // namespace join::fuzz
