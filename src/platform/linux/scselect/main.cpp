#include "platform/linux/Descriptor.h"
#include "platform/linux/StandardStreams.h"
#include "platform/linux/scselect/ActiveConnections.h"
#include "platform/linux/scselect/Interfaces.h"
#include "platform/linux/scselect/LocationList.h"

#include <csignal>
#include <unistd.h>

namespace {

using namespace join::platform;

enum ExitStatus : int { succeeded = 0, usage = 2 };

scselect::Locations findLocations() {
    scselect::Locations locations{.connections = scselect::activeConnections({}), .interfaces = {}};
    if (locations.connections.empty())
        locations.interfaces = scselect::activeInterfaces();
    return locations;
}

} // namespace

/// One argument is taken and changes nothing: locations are only told.
int main(int argc, char** /*arguments*/) {
    openMissingStandardStreams();
    ::signal(SIGPIPE, SIG_IGN);
    if (argc > 2) {
        writeAll(STDERR_FILENO, "usage: scselect [LOCATION]\n");
        return usage;
    }
    writeAll(STDOUT_FILENO, scselect::describe(findLocations()));
    return succeeded;
}
