#pragma once

#include "platform/linux/process/ChildProcess.h"

#include <chrono>
#include <string>
#include <vector>

namespace join::platform::scselect {

/// The programs that print the computer's network connections: NetworkManager's tool, which knows the names
/// that the user gave, and the kernel's as a fallback.
extern const std::vector<ChildProgram> toolsOfTheSystem;

/// Returns the output, below a heading, of the first of the tools that exists, succeeds and ends in time, or
/// the message that no network is known. Control characters are made visible. At most 64 KiB, so that it fits
/// into a pipe that nobody reads yet. For a process with one thread.
std::string networkLocations(const std::vector<ChildProgram>& tools, std::chrono::milliseconds patience);

} // namespace join::platform::scselect
