#include "platform/linux/files/LinuxPaths.h"

#include "platform/Exception.h"
#include "platform/linux/files/Folders.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace join::platform {

namespace {

std::string homeInPasswordEntry() {
    const passwd* entry = ::getpwuid(::getuid());
    const bool isKnown = entry && entry->pw_dir && *entry->pw_dir == '/';
    return isKnown ? entry->pw_dir : "/"; // like login(1), for the users of containers
}

[[noreturn]] void refuse(const std::string& path, const char* reason) {
    throw Exception("The folder " + path + " cannot be used: " + reason);
}

/// Opens a folder of the user, creating it if it is missing, and denies all others access to it.
Descriptor openPrivate(int parent, const char* name, const std::string& path) {
    ::mkdirat(parent, name, S_IRWXU); // it may exist already; it is checked below
    Descriptor folder = closeToOthers(parent, name);
    if (!folder)
        refuse(path, errno == EPERM ? "it belongs to another user" : std::strerror(errno));
    return folder;
}

/// The program's folder in the cache, and the one for temporary files inside it.
constexpr const char* cacheName = "tavojoin";
constexpr const char* temporaryName = "tmp";

} // namespace

LinuxPaths::LinuxPaths() {
    const auto fromEnvironment = absoluteFromEnvironment("HOME");
    home_ = normalised(fromEnvironment ? *fromEnvironment : homeInPasswordEntry());
}

std::string runningBundle() {
    std::error_code error;
    const auto executable = std::filesystem::read_symlink("/proc/self/exe", error);
    const auto folder = executable.parent_path();
    const bool isInBundle = folder.filename() == "MacOS" && folder.parent_path().filename() == "Contents";
    return isInBundle ? folder.parent_path().parent_path() : folder;
}

std::string LinuxPaths::userLibrary() { return normalised(home_ + "/Library"); }

std::string LinuxPaths::bundlePath(const std::string& realPath, const SystemRoot& root) {
    std::error_code error;
    for (const std::string& applications : {localApplications(), home_ + "/Applications"})
        if (std::filesystem::equivalent(parentOf(realPath), root.toReal(applications), error))
            return applications + "/" + nameOf(realPath);
    return root.toSystem(realPath);
}

bool LinuxPaths::prepare() {
    removeTemporary();
    return makeFolders(userLibrary());
}

/// Works relative to open descriptors: others may have write access to the cache.
void LinuxPaths::removeTemporary() const {
    const Descriptor cache = openForReading(AT_FDCWD, this->cache().c_str(), O_DIRECTORY);
    if (!cache)
        return;
    if (const Descriptor ours = openPrivateFolder(cache.get(), cacheName, O_NOFOLLOW))
        removeTree(ours.get(), temporaryName);
}

Descriptor LinuxPaths::openCache() const {
    const std::string path = cache();
    if (!makeFolders(path))
        refuse(path, std::strerror(errno));
    const Descriptor parent = openForReading(AT_FDCWD, path.c_str(), O_DIRECTORY);
    if (!parent)
        refuse(path, std::strerror(errno));
    return openPrivate(parent.get(), cacheName, path + "/" + cacheName);
}

std::string LinuxPaths::temporary() {
    if (const auto given = absoluteFromEnvironment("TMPDIR");
        given && openPrivateFolder(AT_FDCWD, given->c_str(), O_PATH))
        return normalised(*given) + "/";
    const std::string path = cache() + "/" + cacheName + "/" + temporaryName;
    openPrivate(openCache().get(), temporaryName, path);
    return path + "/";
}

std::string LinuxPaths::cache() const {
    return normalised(absoluteFromEnvironment("XDG_CACHE_HOME").value_or(home_ + "/.cache"));
}

} // namespace join::platform
