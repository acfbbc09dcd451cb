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

/// Shows the volume in an image below /Volumes, whole or not at all, replacing an older one of the same name.
/// An image of Apple's format is shown only if its checksums are correct; bare volumes have none to compare.
/// Returns the mount point as a system path. Throws Exception with the reason if nothing is shown. Confines
/// the calling thread, for good, to the image and the folders of the volumes.
std::string mountImage(const std::string& image, const MountSettings& settings);

/// Removes a volume, at once and completely. The mount point is "/Volumes/NAME", a folder and not a link.
/// Throws Exception with the reason.
void detachVolume(const std::string& mountPoint, const SystemRoot& root);

} // namespace join::platform::hdiutil
