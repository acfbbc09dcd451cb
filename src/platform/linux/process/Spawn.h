#pragma once

#include "platform/linux/files/Descriptor.h"
#include "platform/linux/process/Confinement.h"

#include <string>
#include <sys/types.h>
#include <vector>

namespace join::platform {

struct Pipe {
    Descriptor reading;
    Descriptor writing;
};

/// Throws Exception if no pipe can be made.
Pipe makePipe();

/// A program to start. It gets only the given descriptors.
struct Spawn {
    enum class Bond {
        waitedFor, ///< a child of this process
        left,      ///< in a session of its own, and not a child of this process
        confined,  ///< dies with this process; leads a process group, and has little memory and environment
    };
    static constexpr std::size_t maximumStreams = 4;

    std::string path; ///< the real path
    std::vector<std::string> arguments;
    std::vector<int> streams; ///< what its descriptors 0, 1, 2 and so on are; -1 is the null device
    std::string directory;    ///< the working directory; empty for that of this process
    Bond bond;
    const Confinement* confinement = nullptr; ///< entered before the program starts
};

/// A child to wait for.
struct Child {
    pid_t process = -1;
    Descriptor handle; ///< readable once it has ended
};

/// Starts the program and returns once it is running. Returns nothing to wait for if its bond is Bond::left.
/// Throws Exception with the reason if it cannot be started; the message calls it by the given name. Any
/// thread; a confined program dies with that thread.
Child startChild(const Spawn& spawn, const std::string& name);

/// Waits for the end of a child. Returns its status as defined by waitpid(2).
int reap(pid_t child);

} // namespace join::platform
