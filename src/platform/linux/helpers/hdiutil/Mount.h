#pragma once

#include "platform/linux/files/SystemRoot.h"
#include "platform/linux/helpers/hdiutil/VolumePlan.h"

#include <chrono>
#include <string>

namespace join::platform::hdiutil {

struct MountSettings {
    SystemRoot root;
    std::string sevenZip; ///< the path of 7zz
    VolumeLimits limits = {};
    std::chrono::milliseconds allowed = std::chrono::minutes(10);
};

/// Shows the volume in an image below /Volumes, whole or not at all, in place of an older one of its name.
/// An image of Apple's format is only shown when its checksums are right; the bare volumes have none that
/// could be compared. Gives the mount point, as a path of the system. Throws Exception with the reason when
/// nothing is shown. For a process with one thread.
std::string mountImage(const std::string& image, const MountSettings& settings);

/// Takes a volume away, at once and whole. The mount point is "/Volumes/NAME", a folder and not a link.
/// Throws Exception with the reason.
void detachVolume(const std::string& mountPoint, const SystemRoot& root);

} // namespace join::platform::hdiutil
