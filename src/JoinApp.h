#pragma once

#include <optional>
#include <string>

namespace join::platform {
class SingleInstance;
}

/// What the program proper is started with.
struct JoinAppStart {
    char** arguments;                     ///< of main; they outlive the program
    std::optional<std::string> launchUrl; ///< the one it was started with
    join::platform::SingleInstance*
        starts; ///< tells of later starts; none when they cannot reach this process
};

/// Where the module lies, in the bundle.
inline constexpr const char* joinAppModule = "Contents/Frameworks/JoinApp.so";

/// Runs the program proper, a module that is only loaded by the process that is to run. Gives the process's
/// exit status when it cannot start, and else does not return. Throws nothing.
extern "C" int join_run_app(const JoinAppStart& start);
