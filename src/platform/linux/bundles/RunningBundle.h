#pragma once

#include <filesystem>

namespace join::platform {

/// The bundle that the program runs from, told by the path of its executable, BUNDLE/Contents/MacOS/NAME. A
/// real path. An executable that lies in no bundle is taken as one in the folder it lies in.
std::filesystem::path bundleOf(const std::filesystem::path& executable);

/// The path of the running executable.
std::filesystem::path runningExecutable();

} // namespace join::platform
