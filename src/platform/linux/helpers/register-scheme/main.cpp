#include "platform/Exception.h"
#include "platform/linux/files/Descriptor.h"
#include "platform/linux/helpers/register-scheme/Registration.h"
#include "platform/linux/system/LogText.h"
#include "platform/linux/system/StandardStreams.h"

#include <csignal>
#include <fcntl.h>
#include <linux/close_range.h>
#include <unistd.h>

namespace {

using namespace join::platform;

enum ExitStatus : int { succeeded = 0, failed = 1, usage = 2 };

void complain(const std::string& line) {
    writeAll(STDERR_FILENO, escapedForLog("register-scheme: " + line) + "\n");
}

/// Keeps nothing of the program that started this one open, and survives its end. Standard error stays, for
/// failures.
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

} // namespace

int main(int argc, char** argv) {
    standAlone();
    ::signal(SIGPIPE, SIG_IGN);
    const auto registration =
        registerscheme::registrationFrom(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc));
    if (!registration) {
        writeAll(STDERR_FILENO, "usage: register-scheme SCHEME BUNDLEIDENTIFIER BUNDLE\n");
        return usage;
    }
    try {
        registerscheme::registerScheme(*registration);
        return succeeded;
    } catch (const Exception& exception) {
        complain(exception.what());
        return failed;
    }
}
