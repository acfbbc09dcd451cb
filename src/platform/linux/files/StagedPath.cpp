#include "platform/linux/files/StagedPath.h"

#include "platform/linux/files/Folders.h"

#include <atomic>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace join::platform {

namespace {

constexpr std::string_view suffix = ".partial";

std::atomic<unsigned> nextNumber = 1;

/// Returns whether somebody staged something under this name, of the form ".NAME.<pid>.<number>.partial", who
/// does not use it any more: the process is dead, or had our process number before us.
bool isLeft(std::string_view name, std::string_view prefix) {
    if (!name.starts_with(prefix) || !name.ends_with(suffix) || name.size() < prefix.size() + suffix.size())
        return false;
    name.remove_prefix(prefix.size());
    name.remove_suffix(suffix.size());
    pid_t process = 0;
    unsigned number = 0;
    const char* end = name.data() + name.size();
    const auto first = std::from_chars(name.data(), end, process);
    if (first.ec != std::errc() || process <= 0 || first.ptr == end || *first.ptr != '.')
        return false;
    const auto second = std::from_chars(first.ptr + 1, end, number);
    if (second.ec != std::errc() || second.ptr != end)
        return false;
    return process == ::getpid() ? number >= nextNumber : ::kill(process, 0) != 0 && errno == ESRCH;
}

void removeLeftovers(const std::string& folder, const std::string& prefix) {
    for (const std::string& name : namesIn(AT_FDCWD, folder.c_str()).value_or(std::vector<std::string>()))
        if (isLeft(name, prefix))
            removeTree(std::string(folder).append("/").append(name));
}

bool renamed(const std::string& from, const std::string& to, unsigned flags) {
    return ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), flags) == 0;
}

/// For file systems without a rename that refuses to replace: neither way here replaces anything. A folder
/// can only replace an empty one, so an empty folder of our own is created first.
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
    const std::string beginning = folder + "/" + prefix + std::to_string(::getpid()) + ".";
    struct stat found {};
    do
        path_ = beginning + std::to_string(nextNumber++) + std::string(suffix);
    while (::lstat(path_.c_str(), &found) == 0); // a leftover that could not be removed
}

StagedPath::~StagedPath() {
    const int reason = errno; // keeps the reason of an earlier failure
    removeTree(path_);
    errno = reason;
}

bool StagedPath::commitNew() {
    if (renamed(path_, target_, RENAME_NOREPLACE))
        return true;
    return (errno == EINVAL || errno == ENOSYS) && renameToNewByOtherMeans(path_.c_str(), target_.c_str());
}

bool StagedPath::commitOver() { return ::rename(path_.c_str(), target_.c_str()) == 0; }

bool StagedPath::commitInstead() {
    const StagedPath aside(target_);
    return moveInPlace(path_, target_, aside.path());
}

bool moveInPlace(const std::string& from, const std::string& place, const std::string& aside) {
    if (renamed(from, place, RENAME_NOREPLACE) || (errno == EEXIST && renamed(from, place, RENAME_EXCHANGE)))
        return true;
    if (errno != EINVAL && errno != ENOSYS)
        return false;
    // The file system supports neither way.
    const bool isMoved = renamed(place, aside, 0);
    if (renamed(from, place, 0))
        return true;
    const int reason = errno;
    if (isMoved)
        renamed(aside, place, 0);
    errno = reason;
    return false;
}

} // namespace join::platform
