// Linked with every program and module of the coverage build. GCC writes the counts of a process when it ends
// by exit; this also writes them before the process ends in another way, or becomes another program, where
// that can be caught.
#include <cstdlib>
#include <sys/resource.h>
#include <unistd.h>

using Arguments = char* const*;

// GCC's, in each program and module. The linker sends calls of NAME to __wrap_NAME, and those of __real_NAME
// to NAME.
extern "C" {
void dump() __asm__("__gcov_dump");
[[noreturn]] void realExit(int status) __asm__("__real__exit");
[[noreturn]] void exitCounted(int status) __asm__("__wrap__exit");
[[noreturn]] void standardExitCounted(int status) __asm__("__wrap__Exit");
int realExecve(const char* path, Arguments arguments, Arguments environment) __asm__("__real_execve");
int execveCounted(const char* path, Arguments arguments, Arguments environment) __asm__("__wrap_execve");
}

/// Lifts a test's limit on file sizes: half a file of counts would spoil the later ones.
static void writeCounts() {
    rlimit allowed{};
    ::getrlimit(RLIMIT_FSIZE, &allowed);
    const rlimit most{allowed.rlim_max, allowed.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &most);
    dump();
    ::setrlimit(RLIMIT_FSIZE, &allowed);
}

void exitCounted(int status) {
    writeCounts();
    realExit(status);
}

void standardExitCounted(int status) { exitCounted(status); }

int execveCounted(const char* path, Arguments arguments, Arguments environment) {
    writeCounts();
    return realExecve(path, arguments, environment);
}

/// Makes the linker take this file.
extern const int joinCountsAtEnd;
const int joinCountsAtEnd = std::at_quick_exit(dump);
