#include "platform/linux/files/TreeRemoval.h"

#include "platform/linux/files/Descriptor.h"
#include "platform/linux/files/Folders.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace join::platform {

namespace {

/// One descriptor is open for each folder on the way down.
constexpr int maximumDepth = 512;

/// Opens a folder whose entries we mean to remove, and makes sure that its mode lets us.
Descriptor openToEmpty(int parent, const char* name) {
    Descriptor folder = openForReading(parent, name, O_DIRECTORY | O_NOFOLLOW);
    if (!folder && errno == EACCES && ::fchmodat(parent, name, S_IRWXU, AT_SYMLINK_NOFOLLOW) == 0)
        folder = openForReading(parent, name, O_DIRECTORY | O_NOFOLLOW);
    struct stat found {};
    if (folder && ::fstat(folder.get(), &found) == 0 && (found.st_mode & S_IRWXU) != S_IRWXU)
        ::fchmod(folder.get(), (found.st_mode & ALLPERMS) | S_IRWXU); // a refusal shows when the entries stay
    return folder;
}

bool removeEntry(int parent, const char* name, int depth) {
    if (::unlinkat(parent, name, 0) == 0)
        return true;
    if (errno != EISDIR || depth == maximumDepth)
        return false;
    {
        const Descriptor folder = openToEmpty(parent, name);
        const auto names = folder ? namesIn(folder.get()) : std::nullopt;
        if (!names)
            return false;
        for (const std::string& entry : *names)
            removeEntry(folder.get(), entry.c_str(), depth + 1); // what stays keeps its folder from going
    }
    return ::unlinkat(parent, name, AT_REMOVEDIR) == 0;
}

} // namespace

bool removeTree(const std::string& path) { return removeTreeIn(AT_FDCWD, path.c_str()); }

bool removeTreeIn(int folder, const char* name) { return removeEntry(folder, name, 0); }

} // namespace join::platform
