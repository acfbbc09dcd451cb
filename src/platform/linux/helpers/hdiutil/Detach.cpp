#include "platform/linux/helpers/hdiutil/Detach.h"

#include "platform/Exception.h"
#include "platform/linux/files/Folders.h"
#include "platform/linux/files/StagedPath.h"
#include "platform/linux/helpers/hdiutil/Staging.h"
#include "platform/linux/helpers/hdiutil/VolumePlan.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <sys/stat.h>

namespace join::platform::hdiutil {

void detachVolume(const std::string& mountPoint, const SystemRoot& root) {
    constexpr std::string_view volumes = "/Volumes/";
    if (!mountPoint.starts_with(volumes) || !isPlainName(mountPoint.substr(volumes.size())))
        throw Exception("only what is directly below /Volumes can be detached");
    const std::string real = root.toReal(mountPoint);
    struct stat found {};
    if (::lstat(real.c_str(), &found) != 0 || !S_ISDIR(found.st_mode))
        throw Exception("no volume is mounted there");
    // Nothing is made for it: a full disk takes no new folder.
    const StagedPath apart(placeOfWork(root.toReal("/Volumes")));
    if (::rename(real.c_str(), apart.path().c_str()) != 0)
        throw Exception(std::string("the volume cannot be taken away: ") + std::strerror(errno));
    if (!removeTree(apart.path()))
        throw Exception("the volume cannot be removed whole");
}

} // namespace join::platform::hdiutil
