#pragma once

#include "platform/linux/helpers/hdiutil/VolumePlan.h"

#include <cstddef>
#include <functional>
#include <string>

namespace join::platform::hdiutil {

/// Like read(2): fills part of the buffer, gives how much; 0 at the end. May throw Exception.
using ByteSource = std::function<std::size_t(char* buffer, std::size_t size)>;

/// Makes what was planned in a new folder, from the files' bytes one after the other. Folders come first and
/// links last, with their own text, so that nothing is ever written, changed or looked up through a link;
/// each file is a new one. Modes and times are those of the plan, but folders stay usable by their owner.
/// Throws Exception when the bytes are fewer or more than planned, or something cannot be made; what was made
/// by then stays.
void writeVolume(const VolumePlan& plan, const std::string& folder, const ByteSource& source);

} // namespace join::platform::hdiutil
