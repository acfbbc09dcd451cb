#pragma once

#include <thread>

namespace join::platform {

/// Reads the system's font configuration on a thread of its own while the toolkit starts, which would else do
/// so when the first text is drawn: some ten milliseconds before the first window. The thread ends by itself.
std::jthread warmUpFonts();

} // namespace join::platform
