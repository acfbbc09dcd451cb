#include "platform/linux/process/ChildProcess.h"

#include "platform/Exception.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <linux/close_range.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace join::platform::hdiutil {

namespace {

constexpr int pipeSize = 1 << 20;
constexpr rlim_t maximumMemory = rlim_t{4} << 30; ///< of addresses; a hostile image may ask for any amount
constexpr int cannotStart = 127;

[[noreturn]] void raise(const char* what) {
    throw Exception(std::string(what) + ": " + std::strerror(errno));
}

/// What its descriptors 0 and 2, 1 and 3 become.
struct Streams {
    int nothing;
    int output;
    int file;
};

void limit(__rlimit_resource resource, rlim_t maximum) {
    rlimit limits{};
    ::getrlimit(resource, &limits);
    if (limits.rlim_cur > maximum) {
        limits.rlim_cur = maximum;
        ::setrlimit(resource, &limits);
    }
}

/// Copies lie above the places of the streams, so that none overwrites one still needed.
bool arrange(const Streams& streams) {
    constexpr int above = 10;
    const int nothing = ::fcntl(streams.nothing, F_DUPFD_CLOEXEC, above);
    const int output = ::fcntl(streams.output, F_DUPFD_CLOEXEC, above);
    const int file = ::fcntl(streams.file, F_DUPFD_CLOEXEC, above);
    return ::dup2(nothing, 0) == 0 && ::dup2(output, 1) == 1 && ::dup2(nothing, 2) == 2 &&
           ::dup2(file, 3) == 3 && ::syscall(SYS_close_range, 4, ~0U, 0) == 0;
}

/// In the child: only what is allowed between fork and exec.
[[noreturn]] void become(const Streams& streams, pid_t parent, char* const* arguments) {
    std::array<char, 16> locale{"LC_ALL=C.UTF-8"};
    std::array<char, 8> zone{"TZ=UTC0"};
    const std::array<char*, 3> environment{locale.data(), zone.data(), nullptr};
    sigset_t none{};
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::signal(SIGPIPE, SIG_DFL);
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    limit(RLIMIT_AS, maximumMemory);
    limit(RLIMIT_CORE, 0);
    if (::getppid() == parent && arrange(streams))
        ::execve(arguments[0], arguments, environment.data());
    ::_exit(cannotStart);
}

} // namespace

ChildProcess::ChildProcess(const ChildProgram& program, Output output, const Interruption& interruption)
    : interruption_(interruption) {
    const Descriptor nothing(::open("/dev/null", O_RDWR | O_CLOEXEC));
    if (!nothing)
        raise("/dev/null cannot be opened");
    Descriptor writing;
    if (output == Output::read) {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0)
            raise("no pipe can be made");
        output_ = Descriptor(ends[0]);
        writing = Descriptor(ends[1]);
        ::fcntl(ends[1], F_SETPIPE_SZ, pipeSize); // only for speed
    }
    std::vector<char*> arguments{const_cast<char*>(program.path.c_str())};
    for (const std::string& argument : program.arguments)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    const Streams streams{nothing.get(), writing ? writing.get() : nothing.get(), program.file};
    const pid_t parent = ::getpid();
    process_ = ::fork();
    if (process_ == 0)
        become(streams, parent, arguments.data());
    if (process_ < 0)
        raise("no process can be made");
    ::setpgid(process_, process_); // here as well: it may be killed before it came to it
    handle_ = Descriptor(static_cast<int>(::syscall(SYS_pidfd_open, process_, 0)));
    if (!handle_) {
        reap();
        throw Exception("the process cannot be watched");
    }
}

ChildProcess::~ChildProcess() { reap(); }

std::size_t ChildProcess::read(char* buffer, std::size_t size) {
    interruption_.awaitReadable(output_.get());
    const ssize_t count = readSome(output_.get(), buffer, size);
    if (count < 0)
        raise("7zz cannot be read from");
    return static_cast<std::size_t>(count);
}

int ChildProcess::finish() {
    interruption_.awaitReadable(handle_.get());
    return reap();
}

/// The leader stays unreaped until its group has been killed: till then no other group can get its number.
int ChildProcess::reap() {
    if (process_ < 0)
        return 0;
    const pid_t process = std::exchange(process_, -1);
    ::kill(-process, SIGKILL);
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

} // namespace join::platform::hdiutil
