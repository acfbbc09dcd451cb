#include "platform/linux/files/Folders.h"

#include <cerrno>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace join::platform {

namespace {

/// One descriptor is open for each level on the way down.
constexpr int maximumRemovalDepth = 512;

/// Opens a folder whose entries are to be removed, and makes sure that its mode allows that.
Descriptor openToEmpty(int parent, const char* name) {
    Descriptor folder = openForReading(parent, name, O_DIRECTORY | O_NOFOLLOW);
    if (!folder && errno == EACCES && ::fchmodat(parent, name, S_IRWXU, AT_SYMLINK_NOFOLLOW) == 0)
        folder = openForReading(parent, name, O_DIRECTORY | O_NOFOLLOW);
    struct stat found {};
    if (folder && ::fstat(folder.get(), &found) == 0 && (found.st_mode & S_IRWXU) != S_IRWXU)
        ::fchmod(folder.get(), (found.st_mode & ALLPERMS) | S_IRWXU); // a refusal shows when entries stay
    return folder;
}

} // namespace

std::string normalised(std::string_view absolutePath) {
    std::string path = std::filesystem::path(absolutePath).lexically_normal();
    if (path.size() > 1 && path.ends_with('/'))
        path.pop_back();
    return path;
}

std::string withoutLinks(const std::string& path) {
    std::error_code failed;
    const auto resolved = std::filesystem::weakly_canonical(path, failed);
    return failed ? path : resolved.string();
}

std::string parentOf(const std::string& path) { return std::filesystem::path(path).parent_path(); }

std::string nameOf(const std::string& path) { return std::filesystem::path(path).filename(); }

std::optional<std::string> absoluteFromEnvironment(const char* name) {
    const char* value = std::getenv(name);
    return value && *value == '/' ? std::optional(value) : std::nullopt;
}

bool isFolder(const std::string& path) {
    std::error_code failed;
    return std::filesystem::is_directory(std::filesystem::symlink_status(path, failed));
}

bool makeFolders(const std::string& path) {
    if (::mkdir(path.c_str(), S_IRWXU) == 0 ||
        (errno == ENOENT && path != "/" && makeFolders(parentOf(path)) &&
         ::mkdir(path.c_str(), S_IRWXU) == 0))
        return true;
    const int reason = errno;
    std::error_code failed;
    const bool exists = std::filesystem::is_directory(path, failed);
    errno = reason;
    return exists;
}

Descriptor closeToOthers(int parent, const char* name) {
    Descriptor folder = openForReading(parent, name, O_DIRECTORY | O_NOFOLLOW);
    struct stat found {};
    if (!folder || ::fstat(folder.get(), &found) != 0)
        return {};
    if (found.st_uid != ::geteuid()) {
        errno = EPERM;
        return {};
    }
    const bool isClosed = (found.st_mode & ALLPERMS) == S_IRWXU || ::fchmod(folder.get(), S_IRWXU) == 0;
    return isClosed ? std::move(folder) : Descriptor();
}

Descriptor openPrivateFolder(int parent, const char* name, int flags) {
    Descriptor folder = openForReading(parent, name, O_DIRECTORY | flags);
    struct stat found {};
    if (!folder || ::fstat(folder.get(), &found) != 0 || found.st_uid != ::geteuid() ||
        (found.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        return {};
    return folder;
}

std::optional<std::vector<std::string>> namesIn(int folder, const char* path) {
    // A separate descriptor, because reading moves its position and closedir closes it.
    Descriptor reading = openForReading(folder, path, O_DIRECTORY);
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(reading ? ::fdopendir(reading.get()) : nullptr,
                                                     ::closedir);
    if (!stream)
        return std::nullopt;
    reading.release();
    std::vector<std::string> names;
    for (errno = 0; const dirent* entry = ::readdir(stream.get()); errno = 0) {
        const std::string_view name(static_cast<const char*>(entry->d_name));
        if (name != "." && name != "..")
            names.emplace_back(name);
    }
    if (errno != 0)
        return std::nullopt;
    return names;
}

bool removeTree(const std::string& path) { return removeTree(AT_FDCWD, path.c_str()); }

bool removeTree(int folder, const char* name, int depth) {
    if (::unlinkat(folder, name, 0) == 0)
        return true;
    if (errno != EISDIR || depth == maximumRemovalDepth)
        return false;
    {
        const Descriptor opened = openToEmpty(folder, name);
        const auto names = opened ? namesIn(opened.get()) : std::nullopt;
        if (!names)
            return false;
        for (const std::string& entry : *names)
            removeTree(opened.get(), entry.c_str(), depth + 1); // if an entry stays, so does its folder
    }
    return ::unlinkat(folder, name, AT_REMOVEDIR) == 0;
}

} // namespace join::platform
