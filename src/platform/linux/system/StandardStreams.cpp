#include "platform/linux/system/StandardStreams.h"

#include <fcntl.h>
#include <initializer_list>
#include <unistd.h>

namespace join::platform {

void openMissingStandardStreams() {
    // open gives the lowest free number, which is the one just found closed.
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (::fcntl(stream, F_GETFD) < 0 && ::open("/dev/null", O_RDWR) != stream)
            return; // a system without a null device; nothing better is to be had
}

} // namespace join::platform
