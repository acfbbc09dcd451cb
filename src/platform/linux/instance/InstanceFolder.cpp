#include "platform/linux/instance/InstanceFolder.h"

#include "platform/Exception.h"
#include "platform/linux/files/Environment.h"
#include "platform/linux/files/Folders.h"
#include "platform/linux/files/LinuxPaths.h"

#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace join::platform {

namespace {

Descriptor openPrivateFolder(int parent, const char* name) {
    Descriptor folder = openForReading(parent, name, O_DIRECTORY | O_NOFOLLOW);
    struct stat found {};
    if (!folder || ::fstat(folder.get(), &found) != 0 || !isPrivate(found))
        return {};
    return folder;
}

Descriptor openOrMakePrivateFolder(int parent, const char* name) {
    ::mkdirat(parent, name, S_IRWXU); // it may be there; what is there is checked
    return openPrivateFolder(parent, name);
}

Descriptor inRuntimeFolder(const std::string& path) {
    const Descriptor runtime = openPrivateFolder(AT_FDCWD, path.c_str());
    return runtime ? openOrMakePrivateFolder(runtime.get(), "tavojoin") : Descriptor();
}

} // namespace

Descriptor openInstanceFolder() {
    Descriptor folder;
    if (const auto runtime = absoluteFromEnvironment("XDG_RUNTIME_DIR"))
        folder = inRuntimeFolder(*runtime);
    if (!folder)
        folder = inRuntimeFolder("/run/user/" + std::to_string(::geteuid()));
    if (!folder)
        folder = openOrMakePrivateFolder(LinuxPaths().openCache().get(), "run");
    if (!folder)
        throw Exception("There is no private folder for the starts of Join to meet in");
    return folder;
}

} // namespace join::platform
