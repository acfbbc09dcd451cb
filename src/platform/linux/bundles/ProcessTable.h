#pragma once

#include <string>
#include <vector>

namespace join::platform {

/// A running process.
struct Process {
    std::string executable; ///< the real path of its program
    std::string name;       ///< at most 15 bytes, by default from the file name of what was executed
    std::vector<std::string> arguments; ///< the first few, the program's own name among them
};

/// The user's processes that have not ended.
std::vector<Process> ownProcesses();

/// The innermost bundle, X.app, in whose Contents/MacOS the path names something; empty when there is none.
std::string bundleHolding(const std::string& path);

/// The real path of the bundle whose program, or whose script as its interpreter, the process runs; empty
/// when it runs none. A process that only has such a file among its arguments, as an editor, does not run it.
std::string bundleRunBy(const Process& process);

} // namespace join::platform
