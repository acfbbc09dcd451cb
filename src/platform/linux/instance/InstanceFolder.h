#pragma once

#include "platform/linux/files/Descriptor.h"

namespace join::platform {

/// Opens the user's private folder, mode 0700, in which the starts of the program meet, and makes it when it
/// is missing: "tavojoin" in $XDG_RUNTIME_DIR, or in /run/user/UID when that variable was lost on the way,
/// or else "tavojoin/run" in the user's cache. A folder that others can reach, or that is another user's, is
/// passed over. Throws Exception when there is none.
Descriptor openInstanceFolder();

} // namespace join::platform
