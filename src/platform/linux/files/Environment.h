#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace join::platform {

/// The absolute path in an environment variable; nothing when it is unset or anything else.
inline std::optional<std::string> absoluteFromEnvironment(const char* name) {
    const char* value = std::getenv(name);
    if (!value || *value != '/')
        return std::nullopt;
    return value;
}

} // namespace join::platform
