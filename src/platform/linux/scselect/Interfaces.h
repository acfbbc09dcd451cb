#pragma once

#include "platform/linux/scselect/LocationList.h"

#include <vector>

namespace join::platform::scselect {

/// The network interfaces that are up, the loopback left out; none when the system does not tell. Which
/// addresses they have is not asked.
std::vector<Interface> activeInterfaces();

} // namespace join::platform::scselect
