#include "platform/linux/bundles/MountInfo.h"

#include "platform/linux/files/Descriptor.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <mntent.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace join::platform {

namespace {

bool isServedByProgram(const Mount& mount) {
    constexpr std::array<std::string_view, 10> remote{
        "fuse.ceph",   "fuse.curlftpfs", "fuse.davfs",  "fuse.glusterfs", "fuse.gvfsd-fuse",
        "fuse.jmtpfs", "fuse.portal",    "fuse.rclone", "fuse.s3fs",      "fuse.sshfs"};
    return mount.type == "fuse" || mount.type == "fuseblk" ||
           (mount.type.starts_with("fuse.") && std::ranges::find(remote, mount.type) == remote.end());
}

bool liesBelow(std::string_view path, std::string_view folder) {
    return path.size() > folder.size() + 1 && path.starts_with(folder) && path[folder.size()] == '/';
}

} // namespace

std::vector<Mount> localMounts() {
    std::vector<Mount> mounts;
    const std::unique_ptr<FILE, int (*)(FILE*)> table(::setmntent("/proc/self/mounts", "re"), ::endmntent);
    mntent entry{};
    std::array<char, 65536> buffer{};
    while (table && ::getmntent_r(table.get(), &entry, buffer.data(), int{buffer.size()})) {
        Mount mount{.path = entry.mnt_dir,
                    .type = entry.mnt_type,
                    .source = entry.mnt_fsname,
                    .writable = !::hasmntopt(&entry, MNTOPT_RO)};
        if (isLocalVolume(mount))
            mounts.push_back(std::move(mount));
    }
    return mounts;
}

bool isLocalVolume(const Mount& mount) {
    // Their source need not be a device.
    constexpr std::array<std::string_view, 4> ownDevices{"bcachefs", "btrfs", "overlay", "zfs"};
    const bool hasDevice = mount.source.starts_with("/dev/") && !mount.type.starts_with("fuse");
    return hasDevice || isServedByProgram(mount) ||
           std::ranges::find(ownDevices, mount.type) != ownDevices.end();
}

bool isRemovable(const Mount& mount) {
    constexpr unsigned loopDevices = 7; // from the kernel's list of devices
    struct stat device {};
    if (isServedByProgram(mount))
        return true;
    if (::stat(mount.source.c_str(), &device) != 0 || !S_ISBLK(device.st_mode))
        return false;
    // A partition has no such flag; its device, one folder above, has.
    const unsigned major = ::gnu_dev_major(device.st_rdev);
    const std::string folder = "/sys/dev/block/" + std::to_string(major) + ":" +
                               std::to_string(::gnu_dev_minor(device.st_rdev)) + "/";
    return major == loopDevices ||
           std::ranges::any_of(std::array{"removable", "../removable"},
                               [&](const char* flag) { return readFile(folder + flag, 2) == "1\n"; });
}

bool isUnmountable(std::string_view path, std::string_view home) {
    constexpr std::array<std::string_view, 4> folders{"/media", "/mnt", "/run/media", "/Volumes"};
    const auto holds = [path](std::string_view folder) { return liesBelow(path, folder); };
    return std::ranges::any_of(folders, holds) || (!home.empty() && holds(home));
}

} // namespace join::platform
