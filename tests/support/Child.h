#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace join::test {

struct Launch {
    std::vector<std::string> command; ///< looked up on the PATH unless it holds a separator
    std::vector<std::pair<std::string, std::string>> environment = {}; ///< in addition to that of the test
    std::string directory = ".";
    std::string output = "/dev/null"; ///< file for both of its output streams
};

/// A child process. Destroying this object kills it if it still runs.
class Child {
public:
    explicit Child(const Launch& launch) {
        std::vector<char*> arguments;
        for (const std::string& argument : launch.command)
            arguments.push_back(const_cast<char*>(argument.c_str()));
        arguments.push_back(nullptr);
        process_ = ::fork();
        if (process_ < 0)
            throw std::runtime_error("fork");
        if (process_ == 0)
            become(launch, arguments.data());
    }

    ~Child() {
        if (process_ > 0) {
            ::kill(process_, SIGKILL);
            wait();
        }
    }

    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    pid_t process() const { return process_; }

    /// The exit status, or minus the signal that ended it. A process that runs far too long is killed.
    int wait() {
        constexpr int patience = 60'000; // in milliseconds
        const int handle = static_cast<int>(::syscall(SYS_pidfd_open, process_, 0));
        pollfd end{handle, POLLIN, 0};
        if (::poll(&end, 1, patience) == 0)
            ::kill(process_, SIGKILL);
        ::close(handle);
        int status = 0;
        ::waitpid(std::exchange(process_, -1), &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

private:
    [[noreturn]] static void become(const Launch& launch, char** arguments) {
        for (const auto& [name, value] : launch.environment)
            ::setenv(name.c_str(), value.c_str(), 1);
        const int input = ::open("/dev/null", O_RDONLY);
        const int output = ::open(launch.output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        if (::dup2(input, 0) == 0 && ::dup2(output, 1) == 1 && ::dup2(output, 2) == 2 &&
            ::chdir(launch.directory.c_str()) == 0)
            ::execvp(arguments[0], arguments);
        ::_exit(127);
    }

    pid_t process_ = -1;
};

/// Runs a script in a folder. Returns what it writes to its standard output.
inline std::string shell(const std::string& folder, const std::string& script) {
    std::string said;
    FILE* pipe = ::popen(("cd '" + folder + "'\n" + script).c_str(), "r");
    for (int byte = 0; pipe && (byte = std::fgetc(pipe)) != EOF;)
        said += static_cast<char>(byte);
    if (!pipe || ::pclose(pipe) < 0)
        throw std::runtime_error("popen");
    return said;
}

/// Makes checks in a child process, so that they may change anything of it. The first that fails ends it.
inline void expectInChild(const std::function<void()>& checks, const char* said = "") {
    EXPECT_EXIT((GTEST_FLAG_SET(throw_on_failure, true), checks(), ::_exit(0)), testing::ExitedWithCode(0),
                said);
}

/// What an operation that must not succeed throws.
template <typename Operation>
std::string refusalOf(Operation operation) {
    try {
        operation();
    } catch (const std::exception& exception) {
        return exception.what();
    }
    return "no refusal";
}

/// Waits until the condition holds; false if it takes far longer than it should.
template <typename Condition>
bool eventually(Condition condition, std::chrono::seconds patience = std::chrono::seconds(30)) {
    const auto limit = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > limit)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

} // namespace join::test
