#include "platform/linux/bundles/BootMark.h"

#include "platform/linux/files/Descriptor.h"
#include "platform/linux/files/Folders.h"
#include "platform/linux/files/LinuxFileManager.h"
#include "platform/linux/files/StagedFile.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>

namespace join::platform {

namespace {

/// Returns an empty text if the mark cannot be read.
std::string markIn(const std::string& path) {
    constexpr std::size_t maximumSize = 256;
    return readFile(path, maximumSize).value_or("");
}

/// A hidden entry is not shown and may stay if it cannot be deleted; any other at least loses its name.
bool removeVolumes(const SystemRoot& root) {
    LinuxFileManager files(root);
    const std::string real = root.toReal("/Volumes");
    const auto names = namesIn(AT_FDCWD, real.c_str());
    if (!names)
        return errno == ENOENT;
    bool isDone = true;
    for (const std::string& name : *names) {
        if (name.starts_with('.'))
            removeTree(std::string(real).append("/").append(name));
        else
            isDone = files.remove("/Volumes/" + name) && isDone;
    }
    return isDone;
}

} // namespace

bool endVolumesOfEarlierBoots(const SystemRoot& root, const std::string& bootIdPath) {
    const std::string mark = root.path() + "/Volumes.boot";
    const std::string boot = markIn(bootIdPath);
    if (boot.empty() || markIn(mark) == boot)
        return true;
    const Descriptor folder = openForReading(AT_FDCWD, root.path().c_str(), O_DIRECTORY);
    if (!folder)
        return false;
    // A second process must not remove what is mounted after the first has recorded the boot. On a file
    // system without locks that could happen.
    ::flock(folder.get(), LOCK_EX);
    return markIn(mark) == boot || (removeVolumes(root) && writeStaged(mark, boot));
}

} // namespace join::platform
