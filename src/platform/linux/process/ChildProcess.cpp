#include "platform/linux/process/ChildProcess.h"

#include "platform/Exception.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/wait.h>
#include <utility>

namespace join::platform {

ChildProcess::ChildProcess(const ChildProgram& program, Output output, const Interruption& interruption)
    : interruption_(interruption) {
    Pipe pipe;
    if (output == Output::read) {
        pipe = makePipe();
        ::fcntl(pipe.writing.get(), F_SETPIPE_SZ, 1 << 20); // only for speed
    }
    child_ = startChild({.path = program.path,
                         .arguments = program.arguments,
                         .streams = {-1, pipe.writing.get(), -1, program.file},
                         .directory = {},
                         .bond = Spawn::Bond::confined,
                         .confinement = program.confinement},
                        program.path);
    output_ = std::move(pipe.reading);
}

ChildProcess::~ChildProcess() { end(); }

std::size_t ChildProcess::read(char* buffer, std::size_t size) {
    interruption_.awaitReadable(output_.get());
    const ssize_t count = readSome(output_.get(), buffer, size);
    if (count < 0)
        throw Exception(std::string("7zz cannot be read from: ") + std::strerror(errno));
    return static_cast<std::size_t>(count);
}

int ChildProcess::finish() {
    interruption_.awaitReadable(child_.handle.get());
    return end();
}

/// The leader is reaped only after its group has been killed: until then no other group can get its number.
int ChildProcess::end() {
    if (child_.process < 0)
        return 0;
    const pid_t process = std::exchange(child_.process, -1);
    ::kill(-process, SIGKILL);
    const int status = reap(process);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

} // namespace join::platform
