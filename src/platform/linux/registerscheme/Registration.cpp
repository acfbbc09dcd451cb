#include "platform/linux/registerscheme/Registration.h"

#include "platform/Exception.h"
#include "platform/linux/DesktopEntry.h"
#include "platform/linux/Environment.h"
#include "platform/linux/LinuxPaths.h"
#include "platform/linux/hdiutil/ChildProcess.h"
#include "platform/linux/hdiutil/Interruption.h"

#include <cstdlib>
#include <string_view>
#include <unistd.h>

namespace join::platform::registerscheme {

namespace {

using Arguments = std::vector<std::string>;

/// Assignments for env, which then finds the tool on that PATH.
Arguments environment() {
    Arguments assignments{"HOME=" + LinuxPaths().home()};
    if (const char* path = std::getenv("PATH"))
        assignments.push_back(std::string("PATH=") + path);
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME"})
        if (const auto folder = absoluteFromEnvironment(name))
            assignments.push_back(std::string(name) + "=" + *folder);
    return assignments;
}

/// How the tool failed; empty when it did not.
std::string failureOf(const Arguments& command, std::chrono::milliseconds patience) {
    constexpr int notThere = 127; // env's word for it
    Arguments arguments = environment();
    arguments.insert(arguments.end(), command.begin(), command.end());
    try {
        const hdiutil::Interruption interruption(patience);
        hdiutil::ChildProcess tool({.path = "/usr/bin/env", .arguments = arguments, .file = STDIN_FILENO},
                                   hdiutil::ChildProcess::Output::ignored, interruption);
        const int status = tool.finish();
        if (status == notThere)
            return "is not there";
        if (status < 0)
            return "was ended by signal " + std::to_string(-status);
        return status == 0 ? "" : "failed with status " + std::to_string(status);
    } catch (const Exception& exception) {
        return std::string("has not done its work: ") + exception.what();
    }
}

} // namespace

std::optional<Registration> registrationFrom(const std::vector<std::string>& arguments) {
    constexpr std::string_view suffix = ".desktop";
    if (arguments.size() != 3 || !isPlainName(arguments[0]) || !isPlainName(arguments[1]) ||
        !arguments[1].ends_with(suffix) || !arguments[2].starts_with('/'))
        return std::nullopt;
    return Registration{arguments[0], arguments[1], arguments[2]};
}

std::vector<std::string> runTools(const Registration& registration, std::chrono::milliseconds patience) {
    std::vector<std::string> failures;
    for (const Arguments& command :
         {Arguments{"update-desktop-database", registration.applicationsFolder},
          Arguments{"xdg-mime", "default", registration.entryId, "x-scheme-handler/" + registration.scheme}})
        if (const std::string failure = failureOf(command, patience); !failure.empty())
            failures.push_back(command.front() + " " + failure);
    return failures;
}

} // namespace join::platform::registerscheme
