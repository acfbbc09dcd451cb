#include "platform/linux/hdiutil/Detach.h"

#include "platform/Exception.h"
#include "platform/linux/hdiutil/Staging.h"
#include "platform/linux/hdiutil/VolumePlan.h"

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
    const Staging staging(root.toReal("/Volumes"));
    staging.take(real);
    if (!staging.clear())
        throw Exception("the volume cannot be removed whole");
}

} // namespace join::platform::hdiutil
