#pragma once

#include <string>

namespace join::platform {

/// Makes the bundle's program the default handler of a URL scheme. The bundle's path must be real. Writes the
/// desktop entry, named after the identifier, if it is missing or wrong, and makes it the default of its scheme if
/// it is not. Nothing else that the user has chosen changes; a list of defaults that cannot be read stays as it is.
/// Leaves a mark of what was done. Returns at once if another process is already doing this. Throws Exception
/// with the reason if links do not open the bundle afterwards. Changes the environment: for a process of its
/// own.
void registerScheme(const std::string& scheme, const std::string& bundleIdentifier,
                    const std::string& bundle);

} // namespace join::platform
