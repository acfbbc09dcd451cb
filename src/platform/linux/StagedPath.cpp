#include "platform/linux/StagedPath.h"

#include "platform/linux/Descriptor.h"
#include "platform/linux/Folders.h"
#include "platform/linux/TreeRemoval.h"

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace join::platform {

namespace {

constexpr std::string_view suffix = ".partial";

/// The process that staged something under this name, when it is one of ".NAME.<pid>.partial".
std::optional<pid_t> stagedBy(std::string_view name, std::string_view prefix) {
    if (!name.starts_with(prefix) || !name.ends_with(suffix) || name.size() <= prefix.size() + suffix.size())
        return std::nullopt;
    const std::string_view digits = name.substr(prefix.size(), name.size() - prefix.size() - suffix.size());
    pid_t process = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), process);
    if (error != std::errc() || end != digits.data() + digits.size() || process <= 0)
        return std::nullopt;
    return process;
}

bool isDead(pid_t process) { return ::kill(process, 0) != 0 && errno == ESRCH; }

void removeLeftovers(const std::string& folder, const std::string& prefix) {
    const Descriptor opened = openForReading(AT_FDCWD, folder.c_str(), O_DIRECTORY);
    const auto names = opened ? namesIn(opened.get()) : std::nullopt;
    if (!names)
        return;
    for (const std::string& name : *names) {
        const auto process = stagedBy(name, prefix);
        if (process && (*process == ::getpid() || isDead(*process)))
            removeTree(std::string(folder).append("/").append(name));
    }
}

/// For file systems that cannot refuse to replace: neither way here ever does. A folder may only be renamed
/// over an empty one, so an empty one of ours is made first.
bool renameToNewByOtherMeans(const char* source, const char* target) {
    struct stat found {};
    if (::lstat(source, &found) != 0)
        return false;
    if (!S_ISDIR(found.st_mode))
        return ::link(source, target) == 0 && ::unlink(source) == 0;
    if (::mkdir(target, S_IRWXU) != 0)
        return false;
    if (::rename(source, target) == 0)
        return true;
    ::rmdir(target);
    return false;
}

} // namespace

StagedPath::StagedPath(const std::string& target) : target_(target) {
    const std::string folder = parentOf(target);
    const std::string prefix = "." + nameOf(target) + ".";
    removeLeftovers(folder, prefix);
    path_.append(folder).append("/").append(prefix).append(std::to_string(::getpid())).append(suffix);
}

StagedPath::~StagedPath() { removeTree(path_); }

bool StagedPath::commitNew() {
    if (::renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, target_.c_str(), RENAME_NOREPLACE) == 0)
        return true;
    return (errno == EINVAL || errno == ENOSYS) && renameToNewByOtherMeans(path_.c_str(), target_.c_str());
}

bool StagedPath::commitOver() { return ::rename(path_.c_str(), target_.c_str()) == 0; }

} // namespace join::platform
