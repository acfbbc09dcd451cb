#include "platform/linux/process/Spawn.h"

#include "platform/Exception.h"

#include <algorithm>
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

namespace join::platform {

namespace {

constexpr rlim_t maximumMemory = rlim_t{4} << 30; ///< address space; a hostile image may ask for more

void limit(__rlimit_resource resource, rlim_t maximum) {
    rlimit limits{};
    ::getrlimit(resource, &limits);
    limits.rlim_cur = std::min(limits.rlim_cur, maximum);
    ::setrlimit(resource, &limits);
}

/// Returns false if the parent has ended already.
bool confine(pid_t parent) {
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    limit(RLIMIT_AS, maximumMemory);
    limit(RLIMIT_CORE, 0);
    return ::getppid() == parent;
}

/// First makes copies above the places of the streams, so that none overwrites one still needed. All other
/// descriptors are closed by exec, even those that a library forgot to mark.
bool arrange(const std::vector<int>& streams) {
    constexpr int above = 10;
    std::array<int, Spawn::maximumStreams> copies{};
    const int nothing = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    int count = 0;
    for (const int stream : streams)
        copies.at(count++) = ::fcntl(stream < 0 ? nothing : stream, F_DUPFD_CLOEXEC, above);
    for (int place = 0; place < count; ++place)
        if (::dup2(copies.at(place), place) != place)
            return false;
    return ::syscall(SYS_close_range, count, ~0U, CLOSE_RANGE_CLOEXEC) == 0;
}

/// Runs in the child: only calls that are allowed between fork and exec.
[[noreturn]] void become(const Spawn& spawn, char* const* arguments, pid_t parent, int failure) {
    std::array<char, 16> locale{"LC_ALL=C.UTF-8"};
    std::array<char, 8> zone{"TZ=UTC0"};
    const std::array<char*, 3> little{locale.data(), zone.data(), nullptr};
    const bool isConfined = spawn.bond == Spawn::Bond::confined;
    pid_t further = 0;
    if (spawn.bond == Spawn::Bond::left) {
        ::setsid();
        further = ::fork();
        if (further > 0)
            ::_exit(0);
    }
    sigset_t none{};
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::signal(SIGPIPE, SIG_DFL);
    if (further == 0 && (!isConfined || confine(parent)) && arrange(spawn.streams) &&
        (spawn.directory.empty() || ::chdir(spawn.directory.c_str()) == 0) &&
        (spawn.confinement == nullptr || spawn.confinement->enter(arguments[0])))
        ::execve(arguments[0], arguments, isConfined ? little.data() : environ);
    ::_exit(::write(failure, &errno, sizeof errno) > 0 ? 1 : 2);
}

} // namespace

Pipe makePipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        throw Exception(std::string("No pipe can be made: ") + std::strerror(errno));
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

Child startChild(const Spawn& spawn, const std::string& name) {
    std::vector<char*> arguments{const_cast<char*>(spawn.path.c_str())};
    for (const std::string& argument : spawn.arguments)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    Pipe failure = makePipe(); // reports the error; closed by exec on success
    const pid_t parent = ::getpid();
    ::signal(SIGCHLD, SIG_DFL); // our parent may ignore it, and the children's statuses would be lost
    const pid_t child = ::fork();
    if (child == 0)
        become(spawn, arguments.data(), parent, failure.writing.get());
    int reason = errno;
    failure.writing.close();
    bool hasFailed = child < 0 || readSome(failure.reading.get(), &reason, sizeof reason) == sizeof reason;
    const bool isLeft = spawn.bond == Spawn::Bond::left;
    Descriptor handle;
    if (!hasFailed && !isLeft) {
        handle = Descriptor(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));
        reason = errno;
        hasFailed = !handle && ::kill(child, SIGKILL) == 0;
    }
    if (child > 0 && (hasFailed || isLeft))
        reap(child);
    if (hasFailed)
        throw Exception("Cannot start " + name + ": " + std::strerror(reason));
    return {isLeft ? -1 : child, std::move(handle)};
}

int reap(pid_t child) {
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

} // namespace join::platform
