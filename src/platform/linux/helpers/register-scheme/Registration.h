#pragma once

#include <optional>
#include <string>
#include <vector>

namespace join::platform::registerscheme {

/// A bundle whose program becomes the default handler of a URL scheme.
struct Registration {
    std::string scheme;
    std::string bundleIdentifier; ///< the desktop entry's name without its ".desktop"
    std::string bundle;           ///< real path
};

/// The registration that the program's arguments tell; nothing when they tell none.
std::optional<Registration> registrationFrom(const std::vector<std::string>& arguments);

/// Writes the desktop entry when it is not as it should be, and has GIO make it the default of its scheme
/// when it is not. Nothing else that the user has chosen changes; a list of defaults that cannot be read
/// stays as it is. Leaves a mark of what was done; ends at once when another process is at it. Throws
/// Exception with the reason when links do not open the bundle afterwards. Changes the environment: for a
/// process of its own.
void registerScheme(const Registration& registration);

} // namespace join::platform::registerscheme
