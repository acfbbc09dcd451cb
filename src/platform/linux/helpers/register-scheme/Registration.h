#pragma once

#include <optional>
#include <string>
#include <vector>

namespace join::platform::registerscheme {

/// A bundle whose program becomes the default handler of a URL scheme.
struct Registration {
    std::string scheme;
    std::string bundleIdentifier; ///< the desktop entry's name without ".desktop"
    std::string bundle;           ///< real path
};

/// Returns the registration that the program's arguments describe, or nothing if they are invalid.
std::optional<Registration> registrationFrom(const std::vector<std::string>& arguments);

/// Writes the desktop entry if it is missing or wrong, and makes it the default of its scheme if it is not.
/// Nothing else that the user has chosen changes; a list of defaults that cannot be read stays as it is.
/// Leaves a mark of what was done. Returns at once if another process is already doing this. Throws Exception
/// with the reason if links do not open the bundle afterwards. Changes the environment: for a process of its
/// own.
void registerScheme(const Registration& registration);

} // namespace join::platform::registerscheme
