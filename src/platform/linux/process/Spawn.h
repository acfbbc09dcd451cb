#pragma once

#include "platform/linux/files/Descriptor.h"

#include <string>
#include <sys/types.h>
#include <vector>

namespace join::platform {

struct Pipe {
    Descriptor reading;
    Descriptor writing;
};

/// Throws Exception when there is none to be had.
Pipe makePipe();

/// A program to start. It has the descriptors that are given and no others.
struct Spawn {
    enum class Bond {
        waitedFor, ///< a child of ours
        left,      ///< in a session of its own, and a child of nobody here
        confined,  ///< dies with us; it leads a process group, and has little memory and environment
    };
    static constexpr std::size_t maximumStreams = 4;

    std::string path; ///< where it really lies
    std::vector<std::string> arguments;
    std::vector<int> streams; ///< what its descriptors 0, 1, 2 and so on are; -1 is the null device
    std::string directory;    ///< to work in; empty for ours
    Bond bond;
};

/// Starts the program, and returns once it runs. The number is that of a child to wait for, unless the
/// program is left. Throws Exception, with the reason, when it cannot be started; it is called there by the
/// name that is given. Main thread only.
pid_t startChild(const Spawn& spawn, const std::string& name);

/// What can be polled for the end of a child; none when the system has none to give.
Descriptor handleOf(pid_t child);

/// Waits for the end of a child. Returns its status as waitpid(2) has it.
int reap(pid_t child);

} // namespace join::platform
