#pragma once

#include <string>

namespace join::platform {

/// The call stack of the calling thread, a line for each frame, the innermost first. For
/// Exception::setCallStackSource.
std::string callStack();

} // namespace join::platform
