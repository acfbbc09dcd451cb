#pragma once

#include <string>
#include <string_view>

namespace join::tools {

/// Writes a file of which a reader finds all bytes or nothing. Throws std::runtime_error.
void writeWholeFile(const std::string& path, std::string_view bytes);

} // namespace join::tools
