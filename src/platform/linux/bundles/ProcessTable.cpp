#include "platform/linux/bundles/ProcessTable.h"

#include "platform/linux/files/Descriptor.h"
#include "platform/linux/files/Folders.h"

#include <algorithm>
#include <array>
#include <climits>
#include <fcntl.h>
#include <optional>
#include <sstream>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace join::platform {

namespace {

constexpr std::size_t processNameSize = 15; // TASK_COMM_LEN less its NUL

/// Returns the beginning of a file, or an empty text if it cannot be read.
std::string beginningOf(int folder, const char* path) {
    const Descriptor file = openForReading(folder, path);
    std::array<char, 4096> buffer{};
    const ssize_t count = file ? readSome(file.get(), buffer.data(), buffer.size()) : 0;
    return {buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
}

std::string executableOf(int process) {
    constexpr std::string_view deleted = " (deleted)";
    std::array<char, PATH_MAX> buffer{};
    const ssize_t size = ::readlinkat(process, "exe", buffer.data(), buffer.size());
    std::string_view path(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    if (path.ends_with(deleted))
        path.remove_suffix(deleted.size());
    return std::string(path);
}

std::vector<std::string> argumentsIn(const std::string& commandLine) {
    constexpr std::size_t few = 6; // an interpreter's options come before the script
    std::vector<std::string> arguments;
    std::istringstream text(commandLine);
    for (std::string argument; arguments.size() < few && std::getline(text, argument, '\0');)
        arguments.push_back(argument);
    return arguments;
}

/// Returns nothing for another user's process and for one that has ended, which no longer has a program.
std::optional<Process> ownProcess(int proc, const std::string& number) {
    const Descriptor folder = openForReading(proc, number.c_str(), O_DIRECTORY);
    struct stat status {};
    if (!folder || ::fstat(folder.get(), &status) != 0 || status.st_uid != ::geteuid())
        return std::nullopt;
    std::string executable = executableOf(folder.get());
    if (executable.empty())
        return std::nullopt;
    std::string name = beginningOf(folder.get(), "comm");
    if (name.ends_with('\n'))
        name.pop_back();
    return Process{std::move(executable), std::move(name), argumentsIn(beginningOf(folder.get(), "cmdline"))};
}

std::string shortName(const std::string& path) { return nameOf(path).substr(0, processNameSize); }

/// Returns whether the script's first line makes env look for a program of that name: "#!/usr/bin/env
/// [OPTION]... NAME".
bool isRunThroughEnv(const std::string& script, const std::string& processName) {
    std::istringstream line(beginningOf(AT_FDCWD, script.c_str()));
    std::string first;
    std::getline(line, first);
    if (!first.starts_with("#!"))
        return false;
    std::istringstream words(first.substr(2));
    std::string word;
    words >> word;
    if (nameOf(word) != "env")
        return false;
    while (words >> word)
        if (shortName(word) == processName)
            return true;
    return false;
}

} // namespace

std::vector<Process> ownProcesses() {
    std::vector<Process> processes;
    const Descriptor proc = openForReading(AT_FDCWD, "/proc", O_DIRECTORY);
    if (!proc)
        return processes;
    for (const std::string& name : namesIn(proc.get()).value_or(std::vector<std::string>()))
        if (name.find_first_not_of("0123456789") == std::string::npos)
            if (auto process = ownProcess(proc.get(), name))
                processes.push_back(std::move(*process));
    return processes;
}

std::string bundleHolding(const std::string& path) {
    constexpr std::string_view ending = ".app";
    constexpr std::string_view folder = ".app/Contents/MacOS/";
    const auto at = path.rfind(folder);
    const bool isHeld = path.starts_with('/') && at != std::string::npos && at + folder.size() < path.size();
    return isHeld ? path.substr(0, at + ending.size()) : "";
}

std::string bundleRunBy(const Process& process) {
    if (auto bundle = bundleHolding(process.executable); !bundle.empty())
        return bundle;
    for (const std::string& script : process.arguments)
        if (auto bundle = bundleHolding(script); !bundle.empty())
            if (shortName(script) == process.name || isRunThroughEnv(script, process.name))
                return bundle;
    return {};
}

} // namespace join::platform
