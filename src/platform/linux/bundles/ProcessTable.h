#pragma once

#include <string>
#include <vector>

namespace join::platform {

/// A running process.
struct Process {
    std::string executable; ///< the real path of its program
    std::string name;       ///< at most 15 bytes, by default from the file name of the executed file
    std::vector<std::string> arguments; ///< the first few, including the program's own name
};

/// Returns the user's processes that are still running.
std::vector<Process> ownProcesses();

/// Returns the innermost bundle, X.app, in whose Contents/MacOS the path lies, or an empty text if there is
/// none.
std::string bundleHolding(const std::string& path);

/// Returns the real path of the bundle whose program the process runs, or whose script it interprets. Returns
/// an empty text if there is none. A process that merely has such a file among its arguments, such as an
/// editor, does not run it.
std::string bundleRunBy(const Process& process);

} // namespace join::platform
