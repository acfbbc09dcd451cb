#include "platform/linux/files/Descriptor.h"
#include "platform/linux/helpers/scselect/NetworkLocations.h"
#include "platform/linux/system/StandardStreams.h"

#include <chrono>
#include <csignal>
#include <unistd.h>

/// Accepts one argument, which changes nothing: locations are only printed.
int main(int argc, char** /*arguments*/) {
    using namespace join::platform;
    openMissingStandardStreams();
    ::signal(SIGPIPE, SIG_IGN);
    if (argc > 2) {
        writeAll(STDERR_FILENO, "usage: scselect [LOCATION]\n");
        return 2;
    }
    writeAll(STDOUT_FILENO, scselect::networkLocations(scselect::toolsOfTheSystem, std::chrono::seconds(2)));
    return 0;
}
