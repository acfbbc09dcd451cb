#include "platform/Exception.h"
#include "platform/linux/files/Descriptor.h"
#include "platform/linux/helpers/register-scheme/Registration.h"
#include "platform/linux/system/LogText.h"
#include "platform/linux/system/StandardStreams.h"

#include <algorithm>
#include <cctype>
#include <csignal>
#include <cstring>
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

/// Whether the text may be a scheme, or a bundle identifier and so the name of a file.
bool isPlainName(std::string_view text) {
    const auto fits = [](unsigned char c) {
        return std::isalnum(c) != 0 || std::strchr(".+_-", c) != nullptr;
    };
    return std::ranges::all_of(text, fits) && !text.empty() && std::isalnum(text.front()) != 0;
}

} // namespace

int main(int argc, char** argv) {
    standAlone();
    ::signal(SIGPIPE, SIG_IGN);
    if (argc != 4 || !isPlainName(argv[1]) || !isPlainName(argv[2]) || *argv[3] != '/') {
        writeAll(STDERR_FILENO, "usage: register-scheme SCHEME BUNDLEIDENTIFIER BUNDLE\n");
        return usage;
    }
    try {
        registerScheme(argv[1], argv[2], argv[3]);
        return succeeded;
    } catch (const Exception& exception) {
        complain(exception.what());
        return failed;
    }
}
