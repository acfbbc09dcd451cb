#pragma once

#include <string>
#include <string_view>

namespace join::tools {

/// The text on one line of plain ASCII: a backslash becomes \\, every byte that is not printable \xNN.
std::string printable(std::string_view text);

} // namespace join::tools
