#include "platform/linux/LinuxPaths.h"

#include "platform/Exception.h"
#include "platform/linux/Descriptor.h"
#include "platform/linux/Environment.h"
#include "platform/linux/Folders.h"
#include "platform/linux/TreeRemoval.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace join::platform {

namespace {

constexpr mode_t privateMode = S_IRWXU;

std::string homeInPasswordEntry() {
    passwd entry{};
    passwd* found = nullptr;
    std::array<char, 16384> buffer{};
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || !found ||
        !found->pw_dir || *found->pw_dir != '/')
        throw Exception("The user has no home folder");
    return found->pw_dir;
}

[[noreturn]] void refuse(const std::string& path, const char* reason) {
    throw Exception("The folder " + path + " cannot be used: " + reason);
}

/// Opening it first makes sure that what was checked is what is changed.
void ensurePrivate(const std::string& path) {
    const Descriptor folder = openForReading(AT_FDCWD, path.c_str(), O_DIRECTORY | O_NOFOLLOW);
    struct stat found {};
    if (!folder || ::fstat(folder.get(), &found) != 0)
        refuse(path, std::strerror(errno));
    if (found.st_uid != ::geteuid())
        refuse(path, "it belongs to another user");
    if ((found.st_mode & ALLPERMS) != privateMode && ::fchmod(folder.get(), privateMode) != 0)
        refuse(path, std::strerror(errno));
}

bool isPrivateFolder(const std::string& path) {
    struct stat found {};
    return ::stat(path.c_str(), &found) == 0 && isPrivate(found);
}

} // namespace

LinuxPaths::LinuxPaths() {
    const auto fromEnvironment = absoluteFromEnvironment("HOME");
    home_ = normalised(fromEnvironment ? *fromEnvironment : homeInPasswordEntry());
}

std::string LinuxPaths::userLibrary() { return home_ + "/Library"; }

void LinuxPaths::prepare() {
    const std::string path = userLibrary();
    if (::mkdir(path.c_str(), privateMode) != 0 && errno != EEXIST)
        refuse(path, std::strerror(errno));
    removeTree(temporaryInCache());
}

std::string LinuxPaths::temporary() {
    if (const auto given = absoluteFromEnvironment("TMPDIR"); given && isPrivateFolder(*given))
        return normalised(*given) + "/";
    const std::string path = temporaryInCache();
    if (!makeFolders(path, privateMode))
        refuse(path, std::strerror(errno));
    ensurePrivate(path);
    return path + "/";
}

std::string LinuxPaths::temporaryInCache() const {
    return normalised(absoluteFromEnvironment("XDG_CACHE_HOME").value_or(home_ + "/.cache") +
                      "/tavojoin/tmp");
}

} // namespace join::platform
