#pragma once

#include "platform/linux/files/SystemRoot.h"

#include <string>

namespace join::platform::hdiutil {

/// Takes a volume away, at once and whole. The mount point is "/Volumes/NAME", a folder and not a link.
/// Throws Exception with the reason.
void detachVolume(const std::string& mountPoint, const SystemRoot& root);

} // namespace join::platform::hdiutil
