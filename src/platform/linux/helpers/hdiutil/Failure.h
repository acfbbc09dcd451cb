#pragma once

#include "platform/Exception.h"

#include <cerrno>
#include <cstring>
#include <string>

namespace join::platform::hdiutil {

/// Throws Exception with what could not be done and the reason from errno.
[[noreturn]] inline void fail(const std::string& what) {
    throw Exception(what + ": " + std::strerror(errno));
}

} // namespace join::platform::hdiutil
