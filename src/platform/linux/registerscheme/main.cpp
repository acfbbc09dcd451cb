#include "platform/Exception.h"
#include "platform/linux/Descriptor.h"
#include "platform/linux/Folders.h"
#include "platform/linux/LinuxPaths.h"
#include "platform/linux/LogText.h"
#include "platform/linux/StandardStreams.h"
#include "platform/linux/SystemRoot.h"
#include "platform/linux/registerscheme/Registration.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <linux/close_range.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

using namespace join::platform;

enum ExitStatus : int { succeeded = 0, failed = 1, usage = 2 };

void complain(const std::string& line) {
    writeAll(STDERR_FILENO, escapedForLog("register-scheme: " + line) + "\n");
}

/// Nothing of the program that started this one is held, and its end does not end this one. Standard error
/// stays, for the failures.
void standAlone() {
    openMissingStandardStreams();
    ::close_range(STDERR_FILENO + 1, ~0U, 0);
    const Descriptor nothing(::open("/dev/null", O_RDWR | O_CLOEXEC));
    ::dup2(nothing.get(), STDIN_FILENO);
    ::dup2(nothing.get(), STDOUT_FILENO);
    ::setsid();
    if (::chdir("/") != 0)
        complain("the folder / cannot be entered");
}

/// Held as long as it is open; none when another process holds it. Throws Exception when it cannot be had.
Descriptor lock() {
    constexpr mode_t privateFolder = S_IRWXU;
    constexpr mode_t privateFile = S_IRUSR | S_IWUSR;
    const std::string folder = parentOf(normalised(defaultSystemRoot(LinuxPaths().home())));
    const std::string path = folder + "/register-scheme.lock";
    makeFolders(folder, privateFolder);
    constexpr int flags = O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
    Descriptor file(::open(path.c_str(), flags, privateFile));
    if (file && ::flock(file.get(), LOCK_EX | LOCK_NB) == 0)
        return file;
    if (file && errno == EWOULDBLOCK)
        return {};
    throw Exception(path + " cannot be locked: " + std::strerror(errno));
}

int run(const registerscheme::Registration& registration) {
    const Descriptor locked = lock();
    if (!locked)
        return succeeded;
    const std::vector<std::string> failures = registerscheme::runTools(registration);
    for (const std::string& failure : failures)
        complain(failure);
    return failures.empty() ? succeeded : failed;
}

} // namespace

int main(int argc, char** argv) {
    standAlone();
    ::signal(SIGPIPE, SIG_IGN);
    const auto registration =
        registerscheme::registrationFrom(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc));
    if (!registration) {
        writeAll(STDERR_FILENO, "usage: register-scheme SCHEME ENTRY.desktop APPLICATIONSFOLDER\n");
        return usage;
    }
    try {
        return run(*registration);
    } catch (const Exception& exception) {
        complain(exception.what());
        return failed;
    }
}
