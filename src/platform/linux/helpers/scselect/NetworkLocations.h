#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace join::platform::scselect {

/// A program that prints the network connections of the computer.
struct Tool {
    std::string path;
    std::vector<std::string> arguments;
};

/// NetworkManager's, which knows the names that the user gave; without it that of the kernel.
extern const std::vector<Tool> toolsOfTheSystem;

/// What the first of the tools prints that is there, succeeds and ends in time, below a heading; or that no
/// network is known. Control characters are made visible. At most 64 KiB, so that it fits into a pipe that
/// nobody reads yet. For a process with one thread.
std::string networkLocations(const std::vector<Tool>& tools, std::chrono::milliseconds patience);

} // namespace join::platform::scselect
