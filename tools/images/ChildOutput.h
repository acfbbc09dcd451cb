#pragma once

#include <cstddef>
#include <string>
#include <sys/types.h>
#include <vector>

namespace join::tools {

/// A child process whose standard output is read as it comes. It has no input, and a child that was not
/// finished is ended with this object.
class ChildOutput {
public:
    /// The program is looked for on the PATH; no shell sees the arguments. Throws std::runtime_error.
    explicit ChildOutput(const std::vector<std::string>& command);
    ~ChildOutput();

    ChildOutput(const ChildOutput&) = delete;
    ChildOutput& operator=(const ChildOutput&) = delete;

    /// Waits for some bytes and gives their number; none at the end. Throws std::runtime_error.
    std::size_t read(char* buffer, std::size_t size);

    /// Waits for the end. Throws std::runtime_error, with what the child said on its standard error, unless
    /// its status is 0.
    void finish();

private:
    std::string program_;
    int output_ = -1;
    int errors_ = -1;
    pid_t process_ = -1;
};

} // namespace join::tools
