#pragma once

#include <string>

namespace join {

/// Operations that belong to no object.
class JoinUtils {
public:
    /// Starts the application bundle at the path through the workspace, with the milestones of this run as
    /// arguments. False only when something was raised on the way: a launch that the platform refuses counts
    /// as one.
    static bool workspaceLaunchApplication(const std::string& bundlePath);
};

} // namespace join
