#pragma once

#include <optional>
#include <string>

namespace join::platform {
class SingleInstance;
}

/// What the main program is started with.
struct JoinAppStart {
    char** arguments;                     ///< of main; they outlive the program
    std::optional<std::string> launchUrl; ///< the one it was started with
    join::platform::SingleInstance*
        starts; ///< reports later starts; nullptr if they cannot reach this process
};

/// The path of the module inside the bundle.
inline constexpr const char* joinAppModule = "Contents/Frameworks/JoinApp.so";

/// Runs the main program, a module that only the first process loads. Returns the process's exit status if it
/// cannot start, and otherwise does not return. Throws nothing.
extern "C" int join_run_app(const JoinAppStart& start);
