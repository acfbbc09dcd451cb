// The system's list of mounts; anybody who can mount chooses names in it.

#include "platform/linux/bundles/MountInfo.h"
#include "Target.h"

#include <algorithm>

namespace join::fuzz {

namespace {

std::string escaped(std::string_view text) {
    std::string field;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (std::string_view(" \t\n\\").find(c) == std::string_view::npos)
            field += c;
        else
            field.append({'\\', static_cast<char>('0' + (byte >> 6U)),
                          static_cast<char>('0' + (byte >> 3U & 7U)), static_cast<char>('0' + (byte & 7U))});
    }
    return field;
}

std::string lineOf(const platform::Mount& mount) {
    const std::string options = mount.writable ? "rw,noatime" : "ro";
    return "36 35 " + std::to_string(mount.major) + ":" + std::to_string(mount.minor) + " / " +
           escaped(mount.path) + " " + options + " master:1 - " + escaped(mount.type) + " " +
           escaped(mount.source) + " " + options + "\n";
}

} // namespace

void tryOut(std::string_view input) {
    for (const platform::Mount& mount : platform::parseMountInfo(input)) {
        require(mount.path.starts_with('/'));
        platform::isLocalVolume(mount);
        require(platform::isUnmountable(mount.path + "/x", mount.path));

        const auto again = platform::parseMountInfo(lineOf(mount));
        require(again.size() == 1);
        require(again[0].path == mount.path && again[0].type == mount.type);
        require(again[0].source == mount.source && again[0].writable == mount.writable);
        require(again[0].major == mount.major && again[0].minor == mount.minor);
    }
}

} // namespace join::fuzz
