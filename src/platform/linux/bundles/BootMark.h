#pragma once

#include "platform/linux/files/SystemRoot.h"

#include <string>

namespace join::platform {

/// Volumes last until the computer's next boot. Removes those of earlier boots, and records the present boot
/// beside the folder of the volumes: what appears there from now on belongs to this boot. Call it before
/// looking at volumes and before creating one; it costs two small reads once the boot is recorded. Returns
/// false if volumes of an earlier boot may remain or the boot cannot be recorded; errno then says why. On a
/// system that does not identify its boot, nothing is removed. Any process may call it at any time.
bool endVolumesOfEarlierBoots(const SystemRoot& root,
                              const std::string& bootIdPath = "/proc/sys/kernel/random/boot_id");

} // namespace join::platform
