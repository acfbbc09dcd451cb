#include "platform/linux/files/Descriptor.h"
#include "platform/linux/files/LinuxPaths.h"
#include "platform/linux/files/SystemRoot.h"
#include "platform/linux/helpers/hdiutil/Mount.h"
#include "platform/linux/helpers/hdiutil/SevenZip.h"
#include "platform/linux/system/LogText.h"
#include "platform/linux/system/StandardStreams.h"

#include <csignal>
#include <cstdlib>
#include <exception>
#include <string>
#include <string_view>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

using namespace join::platform;

enum ExitStatus : int { succeeded = 0, failed = 1, usage = 2 };

void say(int stream, const std::string& line) { writeAll(stream, line + "\n"); }

void run(std::string_view command, const std::string& argument) {
    const SystemRoot root(defaultSystemRoot(LinuxPaths().home()));
    if (command == "mount")
        say(STDOUT_FILENO, hdiutil::mountImage(argument, {.root = root, .sevenZip = hdiutil::pathOf7zz()}));
    else
        hdiutil::detachVolume(argument, root);
}

} // namespace

int main(int argc, char** argv) {
    openMissingStandardStreams();
    ::signal(SIGPIPE, SIG_IGN);
    // The process that asked for the volume is gone: nobody will use the volume, or remove it.
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    const std::string_view command = argc == 3 ? argv[1] : "";
    if (command != "mount" && command != "detach") {
        say(STDERR_FILENO, "usage: hdiutil mount IMAGE | hdiutil detach MOUNTPOINT");
        return usage;
    }
    ExitStatus status = succeeded;
    try {
        run(command, argv[2]);
    } catch (const std::exception& exception) {
        say(STDERR_FILENO, "hdiutil: " + escapedForLog(exception.what()));
        status = failed;
    }
    std::_Exit(status); // what libraries and sanitizers do at the end is more than a confined process may
}
