#pragma once

#include "platform/linux/files/SystemRoot.h"

#include <string>

namespace join::platform {

/// Volumes end with the computer's boot. Takes away those of earlier boots, and notes the present boot beside
/// the folder of the volumes: what appears there from now on is of this boot. To be called before volumes are
/// looked at and before one is made; it costs two small reads when the boot is noted already. False when
/// there may still be volumes of an earlier boot, or the boot cannot be noted; errno then says why. A system
/// that does not tell its boot keeps what is there. Any process may call it at any time.
bool endVolumesOfEarlierBoots(const SystemRoot& root,
                              const std::string& bootIdPath = "/proc/sys/kernel/random/boot_id");

} // namespace join::platform
