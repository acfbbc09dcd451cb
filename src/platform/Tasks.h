#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace join::platform {

/// A program to run. No shell is involved.
struct Program {
    std::string path;
    std::vector<std::string> arguments;
    std::string workingDirectory;
    std::chrono::milliseconds patience = std::chrono::minutes(15); ///< only for a program that is waited for
};

/// How a program ended.
struct TaskResult {
    bool exited = false; ///< false if a signal ended it, as it does when the patience runs out
    int status = 0;      ///< the exit status, or the number of that signal
    std::string output;  ///< what it wrote to its standard output
};

/// Child processes. They inherit the standard streams and no other descriptor. A tool that the system does
/// not have is looked up by name among the helpers in the program's own bundle. Both operations throw
/// Exception if the program cannot be started. Any thread.
class Tasks {
public:
    virtual ~Tasks() = default;

    /// Runs the program and waits for it to end. What it writes to its standard error goes to this process's,
    /// with control characters made visible.
    virtual TaskResult run(const Program& program) = 0;

    /// Starts the program with its standard streams inherited, and does not wait for it.
    virtual void start(const Program& program) = 0;
};

} // namespace join::platform
