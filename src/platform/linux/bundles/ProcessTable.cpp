#include "platform/linux/bundles/ProcessTable.h"

#include "platform/linux/files/Descriptor.h"
#include "platform/linux/files/Folders.h"

#include <array>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <sstream>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace join::platform {

namespace {

/// Returns the first few parts of a file's beginning, which end with that character.
std::vector<std::string> firstParts(const std::string& path, std::size_t few, char end) {
    const Descriptor file = openForReading(AT_FDCWD, path.c_str());
    std::array<char, 4096> buffer{};
    const ssize_t count = file ? readSome(file.get(), buffer.data(), buffer.size()) : -1;
    std::vector<std::string> parts;
    std::istringstream text(count > 0 ? std::string(buffer.data(), static_cast<std::size_t>(count)) : "");
    for (std::string part; parts.size() < few && std::getline(text, part, end);)
        parts.push_back(part);
    return parts;
}

std::string firstLine(const std::string& path) {
    const auto lines = firstParts(path, 1, '\n');
    return lines.empty() ? "" : lines.front();
}

/// Returns nothing for another user's process and for one that has ended, which no longer has a program.
std::optional<Process> ownProcess(const std::string& folder) {
    constexpr std::string_view deleted = " (deleted)";
    constexpr std::size_t few = 6; // an interpreter's options come before the script
    struct stat status {};
    std::error_code failed;
    if (::stat(folder.c_str(), &status) != 0 || status.st_uid != ::geteuid())
        return std::nullopt;
    std::string executable = std::filesystem::read_symlink(folder + "/exe", failed);
    if (executable.empty())
        return std::nullopt;
    if (executable.ends_with(deleted))
        executable.resize(executable.size() - deleted.size());
    return Process{std::move(executable), firstLine(folder + "/comm"),
                   firstParts(folder + "/cmdline", few, '\0')};
}

std::string shortName(const std::string& path) {
    constexpr std::size_t processNameSize = 15; // TASK_COMM_LEN less its NUL
    return nameOf(path).substr(0, processNameSize);
}

/// Returns whether the script's first line makes env look for a program of that name: "#!/usr/bin/env
/// [OPTION]... NAME".
bool isRunThroughEnv(const std::string& script, const std::string& processName) {
    const std::string line = firstLine(script);
    if (!line.starts_with("#!"))
        return false;
    std::istringstream words(line.substr(2));
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
    std::error_code failed;
    for (std::filesystem::directory_iterator entry("/proc", failed), end; !failed && entry != end;
         entry.increment(failed)) {
        const std::string name = entry->path().filename();
        if (name.find_first_not_of("0123456789") == std::string::npos)
            if (auto process = ownProcess(entry->path()))
                processes.push_back(std::move(*process));
    }
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
