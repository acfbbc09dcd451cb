#pragma once

#include <string>
#include <string_view>

namespace join::tools {

/// Writes a file that readers see whole or not at all. Throws std::runtime_error.
void writeWholeFile(const std::string& path, std::string_view bytes);

} // namespace join::tools
