#pragma once

#include "platform/linux/helpers/hdiutil/Bytes.h"
#include "platform/linux/helpers/hdiutil/VolumePlan.h"

#include <string>

namespace join::platform::hdiutil {

/// Creates the plan's entries in a new folder, from the files' contents one after the other. Folders come
/// first and links last, as plain text, so that nothing is ever written, changed or looked up through a link;
/// each file is new. Modes and times are those of the plan, but folders remain usable by their owner. Throws
/// Exception if there are fewer or more bytes than planned, or if something cannot be created; what was
/// created by then stays.
void writeVolume(const VolumePlan& plan, const std::string& folder, const ByteSource& source);

} // namespace join::platform::hdiutil
