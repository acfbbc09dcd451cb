#pragma once

#include "platform/linux/helpers/hdiutil/Bytes.h"
#include "platform/linux/helpers/hdiutil/VolumePlan.h"

#include <string>

namespace join::platform::hdiutil {

/// Makes what was planned in a new folder, from the files' bytes one after the other. Folders come first and
/// links last, with their own text, so that nothing is ever written, changed or looked up through a link;
/// each file is a new one. Modes and times are those of the plan, but folders stay usable by their owner.
/// Throws Exception when the bytes are fewer or more than planned, or something cannot be made; what was made
/// by then stays.
void writeVolume(const VolumePlan& plan, const std::string& folder, const ByteSource& source);

} // namespace join::platform::hdiutil
