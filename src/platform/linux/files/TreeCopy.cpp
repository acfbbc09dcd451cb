#include "platform/linux/files/TreeCopy.h"

#include "platform/linux/files/Descriptor.h"
#include "platform/linux/files/Folders.h"

#include <array>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace join::platform {

namespace {

/// Two descriptors are open for each level on the way down.
constexpr int maximumDepth = 128;

/// What no copy may have in its mode.
constexpr mode_t forbidden = S_ISUID | S_ISGID | S_ISVTX | S_IWGRP | S_IWOTH;

/// Reports an error that no system call has set.
bool failed(int error) {
    errno = error;
    return false;
}

/// A name in an open folder, or a path with AT_FDCWD.
struct Place {
    int folder;
    const char* name;
};

using Times = std::array<timespec, 2>;

Times timesOf(const struct stat& status) { return {status.st_atim, status.st_mtim}; }

/// Sets permissions first: that does not change the times.
bool setAttributes(int descriptor, const struct stat& status) {
    return ::fchmod(descriptor, status.st_mode & ALLPERMS & ~forbidden) == 0 &&
           ::futimens(descriptor, timesOf(status).data()) == 0;
}

/// The kernel shares blocks or copies by itself if the file system supports it; the rest is copied through a
/// buffer.
bool copyBytes(int source, int target) {
    constexpr std::size_t portion = std::size_t{8} << 20;
    ssize_t count = 0;
    while ((count = ::copy_file_range(source, nullptr, target, nullptr, portion, 0)) > 0)
        startFlush(target, static_cast<std::size_t>(count));
    std::array<char, 65536> buffer{};
    while ((count = readSome(source, buffer.data(), buffer.size())) > 0) {
        if (!writeAll(target, {buffer.data(), static_cast<std::size_t>(count)}))
            return false;
    }
    return count == 0;
}

bool copyFile(int source, const struct stat& status, Place to) {
    constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
    Descriptor target(::openat(to.folder, to.name, flags, S_IRUSR | S_IWUSR));
    return target && copyBytes(source, target.get()) && setAttributes(target.get(), status) && target.close();
}

bool copyLink(Place from, Place to) {
    struct stat status {};
    std::array<char, PATH_MAX> text{};
    if (::fstatat(from.folder, from.name, &status, AT_SYMLINK_NOFOLLOW) != 0 ||
        ::readlinkat(from.folder, from.name, text.data(), text.size() - 1) < 0)
        return false;
    return ::symlinkat(text.data(), to.folder, to.name) == 0 &&
           ::utimensat(to.folder, to.name, timesOf(status).data(), AT_SYMLINK_NOFOLLOW) == 0;
}

bool copyEntry(Place from, Place to, int depth, bool mayLink);

bool copyFolder(int source, const struct stat& status, Place to, int depth, bool mayLink) {
    if (depth == maximumDepth)
        return failed(ENAMETOOLONG);
    if (::mkdirat(to.folder, to.name, S_IRWXU) != 0)
        return false;
    const Descriptor target = openForReading(to.folder, to.name, O_DIRECTORY | O_NOFOLLOW);
    const auto names = namesIn(source);
    if (!target || !names)
        return false;
    for (const std::string& name : *names)
        if (!copyEntry({source, name.c_str()}, {target.get(), name.c_str()}, depth + 1, mayLink))
            return false;
    // Only now: the mode may forbid what was just done, and every entry has changed the times.
    return setAttributes(target.get(), status);
}

/// Gives a file a second name if nobody else can change it through the first one.
bool linkFile(int source, const struct stat& status, Place to) {
    const std::string opened = "/proc/self/fd/" + std::to_string(source);
    return status.st_nlink == 1 && status.st_uid == ::geteuid() && (status.st_mode & forbidden) == 0 &&
           ::linkat(AT_FDCWD, opened.c_str(), to.folder, to.name, AT_SYMLINK_FOLLOW) == 0;
}

bool copyEntry(Place from, Place to, int depth, bool mayLink) {
    const Descriptor source = openForReading(from.folder, from.name, O_NOFOLLOW);
    if (!source)
        return errno == ELOOP && copyLink(from, to);
    struct stat status {};
    if (::fstat(source.get(), &status) != 0)
        return false;
    if (S_ISDIR(status.st_mode))
        return copyFolder(source.get(), status, to, depth, mayLink);
    if (!S_ISREG(status.st_mode))
        return failed(EINVAL);
    return (mayLink && linkFile(source.get(), status, to)) || copyFile(source.get(), status, to);
}

} // namespace

bool copyTree(const std::string& source, const std::string& target, bool mayLink) {
    if (isFolder(source) && withoutLinks(target).starts_with(withoutLinks(source) + "/"))
        return failed(EINVAL); // it would never end
    return copyEntry({AT_FDCWD, source.c_str()}, {AT_FDCWD, target.c_str()}, 0, mayLink);
}

} // namespace join::platform
