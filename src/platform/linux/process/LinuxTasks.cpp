#include "platform/linux/process/LinuxTasks.h"

#include "platform/Exception.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <linux/close_range.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace join::platform {

namespace {

using std::chrono::milliseconds;
using SteadyClock = std::chrono::steady_clock;

/// What a child's standard streams are.
enum class Streams { inherited, outputRead, none };

struct Pipe {
    Descriptor reading;
    Descriptor writing;
};

Pipe makePipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        throw Exception(std::string("No pipe can be made: ") + std::strerror(errno));
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

/// All that a child needs. It is made before: between fork and exec nothing may be.
struct Spawn {
    Spawn(const std::string& path, const Program& program, Streams wanted)
        : directory(program.workingDirectory.c_str()), streams(wanted) {
        arguments.push_back(const_cast<char*>(path.c_str()));
        for (const std::string& argument : program.arguments)
            arguments.push_back(const_cast<char*>(argument.c_str()));
        arguments.push_back(nullptr);
    }

    std::vector<char*> arguments; ///< the program's path first
    const char* directory;
    Streams streams;
    Pipe failure = makePipe(); ///< tells the error; closed by itself once the program runs
    Pipe output = streams == Streams::outputRead ? makePipe() : Pipe();
};

/// Children get the standard streams only, whatever a library forgot to mark.
bool arrange(const Spawn& spawn) {
    ::syscall(SYS_close_range, 3, ~0U, CLOSE_RANGE_CLOEXEC);
    ::signal(SIGPIPE, SIG_DFL);
    if (spawn.streams == Streams::outputRead && ::dup2(spawn.output.writing.get(), STDOUT_FILENO) < 0)
        return false;
    const int nothing = spawn.streams == Streams::none ? ::open("/dev/null", O_RDWR | O_CLOEXEC) : -1;
    for (int stream = 0; spawn.streams == Streams::none && stream < 3; ++stream)
        if (::dup2(nothing, stream) < 0)
            return false;
    return *spawn.directory == '\0' || ::chdir(spawn.directory) == 0;
}

/// In the child: only what is allowed between fork and exec. One that is left alone is a child of nobody
/// here, in a session of its own.
[[noreturn]] void become(const Spawn& spawn) {
    pid_t further = 0;
    if (spawn.streams != Streams::outputRead) {
        ::setsid();
        further = ::fork();
        if (further > 0)
            ::_exit(0);
    }
    if (further == 0 && arrange(spawn))
        ::execv(spawn.arguments[0], spawn.arguments.data());
    const int reason = errno;
    ::_exit(::write(spawn.failure.writing.get(), &reason, sizeof reason) > 0 ? 1 : 2);
}

int waitFor(pid_t process) {
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

/// Starts the child, and returns its number when its program runs. Else throws with the reason. Only one
/// whose output is read is there to be waited for.
pid_t startChild(Spawn& spawn, const Program& program) {
    const pid_t process = ::fork();
    if (process == 0)
        become(spawn);
    int reason = errno;
    spawn.failure.writing.close();
    spawn.output.writing.close();
    const bool hasFailed =
        process < 0 || readSome(spawn.failure.reading.get(), &reason, sizeof reason) == sizeof reason;
    if (process > 0 && (hasFailed || spawn.streams != Streams::outputRead))
        waitFor(process);
    if (hasFailed)
        throw Exception("Cannot start " + program.path + ": " + std::strerror(reason));
    return process;
}

/// A child whose output is read.
class Running {
public:
    Running(pid_t process, Descriptor output)
        : process_(process), output_(std::move(output)),
          handle_(static_cast<int>(::syscall(SYS_pidfd_open, process, 0))) {
        ::fcntl(output_.get(), F_SETFL, O_NONBLOCK);
    }

    /// Reads until it has ended or the time is over. True when it has ended.
    bool awaitEnd(milliseconds patience) {
        const auto limit = SteadyClock::now() + patience;
        for (;;) {
            const auto left = std::chrono::ceil<milliseconds>(limit - SteadyClock::now());
            std::array<pollfd, 2> events{{{.fd = handle_.get(), .events = POLLIN, .revents = 0},
                                          {.fd = output_.get(), .events = POLLIN, .revents = 0}}};
            const int count = ::poll(events.data(), events.size(),
                                     static_cast<int>(std::max(left, milliseconds(0)).count()));
            if (count < 0 && errno != EINTR)
                return false;
            if (count > 0 && events[1].revents != 0 && !readWhatIsThere())
                output_.close();
            if (count > 0 && events[0].revents != 0) {
                readWhatIsThere(); // others that it has started may keep the pipe open
                return true;
            }
            if (left <= milliseconds(0))
                return false;
        }
    }

    /// Ends it when it does not end in time. One that not even the kernel can end is left.
    TaskResult result(milliseconds patience) {
        constexpr milliseconds toClearUp(2000);
        bool hasEnded = handle_ && awaitEnd(patience);
        for (const int signal : {SIGTERM, SIGKILL})
            if (!hasEnded && ::kill(process_, signal) == 0)
                hasEnded = awaitEnd(toClearUp);
        const int status = hasEnded || !handle_ ? waitFor(process_) : 0;
        if (hasEnded && WIFEXITED(status))
            return {.exited = true, .status = WEXITSTATUS(status), .output = std::move(text_)};
        return {.exited = false, .status = WTERMSIG(status), .output = std::move(text_)};
    }

private:
    /// False at the end of its output.
    bool readWhatIsThere() {
        std::array<char, 16384> buffer{};
        ssize_t count = 0;
        while ((count = readSome(output_.get(), buffer.data(), buffer.size())) > 0)
            text_.append(buffer.data(), static_cast<std::size_t>(count));
        return count < 0 && errno == EAGAIN;
    }

    pid_t process_;
    Descriptor output_;
    Descriptor handle_;
    std::string text_;
};

} // namespace

LinuxTasks::LinuxTasks(SystemRoot root, std::filesystem::path helpersFolder)
    : root_(std::move(root)), helpersFolder_(std::move(helpersFolder)) {
    ::signal(SIGCHLD, SIG_DFL); // whoever starts us may ignore it, and how children end would be lost
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(helpersFolder_, error))
        if (Descriptor opened = openForReading(AT_FDCWD, entry.path().c_str()))
            helpers_.emplace(entry.path().filename(), std::move(opened));
}

TaskResult LinuxTasks::run(const Program& program) {
    const std::string path = realPath(program.path);
    Spawn spawn(path, program, Streams::outputRead);
    const pid_t process = startChild(spawn, program);
    return Running(process, std::move(spawn.output.reading)).result(program.patience);
}

void LinuxTasks::start(const Program& program) {
    const std::string path = realPath(program.path);
    Spawn spawn(path, program, Streams::inherited);
    startChild(spawn, program);
}

bool LinuxTasks::startDetached(const Program& program) {
    const std::string path = realPath(program.path);
    try {
        Spawn spawn(path, program, Streams::none);
        startChild(spawn, program);
        return true;
    } catch (const Exception&) {
        return false;
    }
}

std::string LinuxTasks::realPath(const std::string& program) const {
    std::filesystem::path path = root_.toReal(program);
    std::error_code error;
    if (path.is_relative())
        path = helpersFolder_ / path; // never looked for on the PATH, nor where we happen to be
    else if (std::filesystem::exists(path, error))
        return path;
    const auto helper = helpers_.find(path.filename());
    return helper == helpers_.end() ? path.string() : "/proc/self/fd/" + std::to_string(helper->second.get());
}

} // namespace join::platform
