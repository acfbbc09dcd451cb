#include "platform/linux/hdiutil/Staging.h"

#include "platform/Exception.h"
#include "platform/linux/Folders.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

namespace join::platform::hdiutil {

namespace {

bool renamed(const std::string& from, const std::string& to, unsigned flags) {
    return ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), flags) == 0;
}

[[noreturn]] void raise(const char* what) {
    throw Exception(std::string(what) + ": " + std::strerror(errno));
}

} // namespace

std::string placeOfWork(const std::string& volumes) { return parentOf(volumes) + "/hdiutil"; }

Staging::Staging(const std::string& volumes) : place_(placeOfWork(volumes)) {
    if (::mkdir(path().c_str(), S_IRWXU) != 0)
        raise("no private folder can be made");
}

void Staging::show(const std::string& folder, const std::string& volume) const {
    if (renamed(folder, volume, RENAME_NOREPLACE) ||
        (errno == EEXIST && renamed(folder, volume, RENAME_EXCHANGE)))
        return;
    if (errno != EINVAL && errno != ENOSYS)
        raise("the volume cannot be shown");
    // A file system that knows neither way.
    const std::string older = path() + "/older";
    const bool isMoved = renamed(volume, older, 0);
    if (!renamed(folder, volume, 0)) {
        const int error = errno;
        if (isMoved)
            renamed(older, volume, 0);
        errno = error;
        raise("the volume cannot be shown");
    }
}

} // namespace join::platform::hdiutil
