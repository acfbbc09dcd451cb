#include "JoinApp.h"

#include "platform/linux/files/LinuxPaths.h"
#include "platform/linux/instance/SingleInstance.h"
#include "platform/linux/system/StandardStreams.h"

#include <dlfcn.h>
#include <sysexits.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>

namespace {

using namespace join::platform;

constexpr int usageError = 2;

int refuse(const std::string& reason, int status) {
    std::cerr << "Join: " << reason << '\n';
    return status;
}

/// Returns the token with which the desktop lets a window come to the front: Wayland's, or else X11's.
std::string activationToken() {
    constexpr std::size_t maximumSize = 1024;
    for (const char* name : {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"})
        if (const char* value = std::getenv(name); value && *value)
            return std::string(value).substr(0, maximumSize);
    return {};
}

/// Loads and runs the rest of the program, including the toolkit.
int runApp(const JoinAppStart& start) {
    const std::string module = runningBundle() + "/" + joinAppModule;
    void* loaded = ::dlopen(module.c_str(), RTLD_LAZY | RTLD_LOCAL);
    void* entry = loaded ? ::dlsym(loaded, "join_run_app") : nullptr;
    if (!entry)
        return refuse(std::string("cannot start: ") + ::dlerror(), EXIT_FAILURE);
    return reinterpret_cast<decltype(&join_run_app)>(entry)(start);
}

} // namespace

int main(int argc, char* argv[]) {
    openMissingStandardStreams();
    std::signal(SIGPIPE, SIG_IGN);
    if (argc > 2 || (argc == 2 && !isLaunchUrl(argv[1])))
        return refuse("Join takes one optional argument, a launch URL, tavojoin://…", usageError);

    InstanceMessage message{.url = {}, .activationToken = activationToken()};
    if (argc == 2) {
        message.url = argv[1];
        std::fill_n(argv[1], message.url->size(), '\0'); // every user can read the arguments of a process
    }
    std::optional<SingleInstance> starts;
    try {
        starts.emplace(openInstanceFolder());
        switch (starts->start(message)) {
        case SingleInstance::Start::handedOver:
            return EXIT_SUCCESS;
        case SingleInstance::Start::unanswered:
            return refuse("a Join is running already and does not answer", EX_TEMPFAIL);
        case SingleInstance::Start::first:
            break;
        }
    } catch (const std::exception& exception) {
        starts.reset();
        std::cerr << "Join: later starts will not find this one: " << exception.what() << '\n';
    }
    return runApp({.arguments = argv, .launchUrl = message.url, .starts = starts ? &*starts : nullptr});
}
