#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace join::platform {

/// A mounted file system.
struct Mount {
    int major = 0; ///< the device's numbers; a major number of 0 is no block device
    int minor = 0;
    std::string path;
    std::string type;
    std::string source;
    bool writable = false;
};

/// The mounts in a text like that of /proc/self/mountinfo, in its order; described in proc(5). Lines that are
/// none are left out.
std::vector<Mount> parseMountInfo(std::string_view text);

/// Whether a program of this machine serves it through FUSE, as those do that open disk images or the file
/// systems of other systems. Those that fetch the files from elsewhere are not meant.
bool isServedByProgram(const Mount& mount);

/// Whether the files are on a device of this machine: neither on the network nor made up by the kernel.
bool isLocalVolume(const Mount& mount);

/// Whether the user may want to take the volume away: it lies below the folders that hold such volumes, or in
/// the home folder, which may be empty. The system's own volumes do not.
bool isUnmountable(std::string_view path, std::string_view home);

} // namespace join::platform
