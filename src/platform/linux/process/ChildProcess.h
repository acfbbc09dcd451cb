#pragma once

#include "platform/linux/process/Interruption.h"
#include "platform/linux/process/Spawn.h"

#include <cstddef>
#include <string>
#include <vector>

namespace join::platform {

/// A program to run: its absolute path, its arguments, and the one file open beside its standard streams, as
/// descriptor 3; -1 is the null device.
struct ChildProgram {
    static constexpr const char* fileArgument = "/proc/self/fd/3"; ///< how arguments name that file

    std::string path;
    std::vector<std::string> arguments;
    int file = -1;
    const Confinement* confinement = nullptr; ///< entered before the program starts
};

/// A running program that inherits nothing but that file: no input, a minimal environment, no standard error.
/// It leads a process group of its own, which is killed when this object is destroyed, and dies with this
/// process.
class ChildProcess {
public:
    enum class Output { read, ignored };

    /// Throws Exception if it cannot be started. The interruption must outlive this object.
    ChildProcess(const ChildProgram& program, Output output, const Interruption& interruption);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Reads its output like read(2). Throws Exception on an error or an interruption.
    std::size_t read(char* buffer, std::size_t size);

    /// Waits for its end. Returns its exit status, or minus the signal that ended it. Throws Exception on an
    /// interruption.
    int finish();

private:
    int end();

    const Interruption& interruption_;
    Descriptor output_;
    Child child_;
};

} // namespace join::platform
