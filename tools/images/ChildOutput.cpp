#include "images/ChildOutput.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace join::tools {

namespace {

std::runtime_error failure(const std::string& what, int number) {
    return std::runtime_error(what + ": " + std::strerror(number));
}

/// Starts it with an empty input and the two descriptors as its output streams. Gives an error number.
int spawn(const std::vector<std::string>& command, int output, int errors, pid_t& process) {
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO);
    const int error = ::posix_spawnp(&process, arguments[0], &actions, nullptr, arguments.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    return error;
}

} // namespace

ChildOutput::ChildOutput(const std::vector<std::string>& command) : program_(command.at(0)) {
    std::array<int, 2> pipe{};
    if (::pipe2(pipe.data(), O_CLOEXEC) != 0)
        throw failure("pipe", errno);
    output_ = pipe[0];
    // Kept in memory: a second pipe that nobody reads meanwhile could hold the child up.
    errors_ = ::memfd_create("child-errors", MFD_CLOEXEC);
    const int error = errors_ < 0 ? errno : spawn(command, pipe[1], errors_, process_);
    ::close(pipe[1]);
    if (error == 0)
        return;
    ::close(output_);
    ::close(errors_);
    throw failure("cannot start " + program_, error);
}

ChildOutput::~ChildOutput() {
    ::close(output_);
    ::close(errors_);
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }
}

std::size_t ChildOutput::read(char* buffer, std::size_t size) {
    while (true) {
        const ssize_t got = ::read(output_, buffer, size);
        if (got >= 0)
            return static_cast<std::size_t>(got);
        if (errno != EINTR)
            throw failure("cannot read from " + program_, errno);
    }
}

void ChildOutput::finish() {
    int status = 0;
    while (::waitpid(process_, &status, 0) < 0)
        if (errno != EINTR)
            throw failure("cannot wait for " + program_, errno);
    process_ = -1;
    if (status == 0)
        return;
    std::string said(4096, '\0');
    const ssize_t size = ::pread(errors_, said.data(), said.size(), 0);
    said.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    throw std::runtime_error(program_ + " failed: " + said);
}

} // namespace join::tools
