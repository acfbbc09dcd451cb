#include "platform/linux/process/LinuxTasks.h"

#include "platform/Exception.h"
#include "platform/linux/system/LogText.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace join::platform {

namespace {

using std::chrono::milliseconds;
using SteadyClock = std::chrono::steady_clock;

/// A child whose output is read, and whose errors go to the log.
class Running {
public:
    Running(Child child, Descriptor output, Descriptor errors)
        : child_(std::move(child)), output_(std::move(output)), errors_(std::move(errors)) {
        ::fcntl(output_.get(), F_SETFL, O_NONBLOCK);
        ::fcntl(errors_.get(), F_SETFL, O_NONBLOCK);
    }

    /// Reads until the child has ended or the time is up. Returns true if it has ended.
    bool awaitEnd(milliseconds patience) {
        const auto limit = SteadyClock::now() + patience;
        for (;;) {
            const auto left = std::chrono::ceil<milliseconds>(limit - SteadyClock::now());
            std::array<pollfd, 3> events{pollfd{child_.handle.get(), POLLIN, 0},
                                         pollfd{output_.get(), POLLIN, 0}, pollfd{errors_.get(), POLLIN, 0}};
            const auto wait = static_cast<int>(std::max(left, milliseconds(0)).count());
            if (::poll(events.data(), events.size(), wait) < 0 && errno != EINTR)
                return false;
            const bool hasEnded = events[0].revents != 0; // its own children may keep the pipes open
            readWhatIsThere(output_, text_);
            readWhatIsThere(errors_, said_);
            logWhatWasSaid(hasEnded);
            if (hasEnded || left <= milliseconds(0))
                return hasEnded;
        }
    }

    /// Ends the child if it does not end in time. A child that even the kernel cannot end is abandoned.
    TaskResult result(milliseconds patience) {
        constexpr milliseconds toClearUp(2000);
        bool hasEnded = awaitEnd(patience);
        for (const int signal : {SIGTERM, SIGKILL})
            if (!hasEnded && ::kill(child_.process, signal) == 0)
                hasEnded = awaitEnd(toClearUp);
        const int status = hasEnded ? reap(child_.process) : SIGKILL;
        const bool exited = WIFEXITED(status);
        return {exited, exited ? WEXITSTATUS(status) : WTERMSIG(status), std::move(text_)};
    }

private:
    /// Closes the pipe at its end.
    static void readWhatIsThere(Descriptor& pipe, std::string& text) {
        std::array<char, 16384> buffer{};
        ssize_t count = 0;
        while ((count = readSome(pipe.get(), buffer.data(), buffer.size())) > 0)
            text.append(buffer.data(), static_cast<std::size_t>(count));
        if (count == 0 || errno != EAGAIN)
            pipe.close();
    }

    /// Keeps the beginning of a line, of which the rest may follow.
    void logWhatWasSaid(bool isAll) {
        constexpr std::size_t longest = 65536;
        const auto end = isAll || said_.size() > longest ? said_.size() : said_.rfind('\n') + 1;
        writeAll(STDERR_FILENO, escapedForLog(said_.substr(0, end)));
        said_.erase(0, end);
    }

    Child child_;
    Descriptor output_;
    Descriptor errors_;
    std::string text_;
    std::string said_;
};

} // namespace

LinuxTasks::LinuxTasks(SystemRoot root, std::filesystem::path helpersFolder)
    : root_(std::move(root)), helpersFolder_(std::move(helpersFolder)) {
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(helpersFolder_, error))
        if (Descriptor opened = openForReading(AT_FDCWD, entry.path().c_str()))
            helpers_.emplace(entry.path().filename(), std::move(opened));
}

TaskResult LinuxTasks::run(const Program& program) {
    Pipe output = makePipe();
    Pipe errors = makePipe();
    Child child = startChild(program, {STDIN_FILENO, output.writing.get(), errors.writing.get()},
                             Spawn::Bond::waitedFor);
    output.writing.close();
    errors.writing.close();
    return Running(std::move(child), std::move(output.reading), std::move(errors.reading))
        .result(program.patience);
}

void LinuxTasks::start(const Program& program) {
    startChild(program, {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}, Spawn::Bond::left);
}

bool LinuxTasks::startDetached(const Program& program) {
    try {
        startChild(program, {-1, -1, -1}, Spawn::Bond::left);
        return true;
    } catch (const Exception&) {
        return false;
    }
}

Child LinuxTasks::startChild(const Program& program, std::vector<int> streams, Spawn::Bond bond) const {
    return platform::startChild({.path = realPath(program.path),
                                 .arguments = program.arguments,
                                 .streams = std::move(streams),
                                 .directory = program.workingDirectory,
                                 .bond = bond},
                                program.path);
}

std::string LinuxTasks::realPath(const std::string& program) const {
    std::filesystem::path path = root_.toReal(program);
    std::error_code error;
    if (path.is_relative())
        path = helpersFolder_ / path; // never searched for on the PATH or in the working directory
    else if (std::filesystem::exists(path, error))
        return path;
    const auto helper = helpers_.find(path.filename());
    return helper == helpers_.end() ? path.string() : "/proc/self/fd/" + std::to_string(helper->second.get());
}

} // namespace join::platform
