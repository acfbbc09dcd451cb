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

/// Where in a bundle a running process comes from.
struct BundleProgram {
    std::string bundle; ///< the real path of X.app
    std::string file;   ///< the real path of the program or script in its MacOS folder
};

/// The bundle program that a path names: something in "X.app/Contents/MacOS/" of the innermost such bundle;
/// empty texts when it names none.
BundleProgram bundleProgramAt(const std::string& path);

/// The bundle program that the process runs, as its program or as the script that its program interprets;
/// empty texts when it runs none. A process that only has such a file among its arguments, as an editor, does
/// not run it.
BundleProgram bundleProgramOf(const Process& process);

} // namespace join::platform
