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

/// An empty text when it cannot be read.
std::string markIn(const std::string& path) {
    constexpr std::size_t maximumSize = 256;
    return readFile(path, maximumSize).value_or("");
}

/// Hidden ones are not shown; all else goes from its name, even if it cannot be removed.
bool removeVolumes(const SystemRoot& root) {
    LinuxFileManager files(root);
    const std::string real = root.toReal("/Volumes");
    const Descriptor folder = openForReading(AT_FDCWD, real.c_str(), O_DIRECTORY);
    const auto names = folder ? namesIn(folder.get()) : std::nullopt;
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
    // Who comes second must not take away what is mounted after the first has noted the boot. A file system
    // without locks leaves that to chance.
    ::flock(folder.get(), LOCK_EX);
    return markIn(mark) == boot || (removeVolumes(root) && writeStaged(mark, boot));
}

} // namespace join::platform
