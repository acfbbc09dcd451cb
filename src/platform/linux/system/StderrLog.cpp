#include "platform/linux/system/StderrLog.h"

#include "platform/linux/system/LogText.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <execinfo.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace join::platform {

namespace {

Descriptor openLogFile(const std::string& path) {
    // Must not block if somebody has put a pipe there.
    constexpr int flags = O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    return Descriptor(::open(path.c_str(), flags, 0666));
}

} // namespace

StderrLog::StderrLog(std::string processName, Clock& clock)
    : processName_(std::move(processName)), clock_(clock),
      first_(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)) {}

void StderrLog::write(std::string_view message) {
    const LocalTime now = clock_.localTime();
    std::array<char, 96> stamp{};
    std::snprintf(stamp.data(), stamp.size(), "%04d-%02d-%02d %02d:%02d:%02d.%03d ", now.year, now.month,
                  now.day, now.hour, now.minute, now.second, now.millisecond);
    const std::string line = stamp.data() + processName_ + '[' + std::to_string(::getpid()) + ':' +
                             std::to_string(::gettid()) + "] " + escapedForLog(message) + '\n';
    if (!writeAll(STDERR_FILENO, line))
        writeAll(first_.get(), line);
}

std::uint64_t StderrLog::redirectStandardStreams(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0 && current_ == std::pair(status.st_dev, status.st_ino))
        return static_cast<std::uint64_t>(status.st_size);

    const Descriptor file = openLogFile(path);
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return 0;
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (::dup2(file.get(), stream) < 0)
            return 0;
    current_ = {status.st_dev, status.st_ino};
    return static_cast<std::uint64_t>(status.st_size);
}

std::string callStack() {
    std::array<void*, 48> frames{};
    const int count = ::backtrace(frames.data(), static_cast<int>(frames.size()));
    const std::unique_ptr<char*, decltype(&std::free)> names(::backtrace_symbols(frames.data(), count),
                                                             &std::free);
    std::string text;
    for (int i = 0; names && i < count; ++i)
        text.append(text.empty() ? "" : "\n").append(names.get()[i]);
    return text;
}

} // namespace join::platform
