#pragma once

#include <string>
#include <vector>

namespace join::platform {

/// What the system tells about a mounted volume.
struct FileSystemInfo {
    bool known = false; ///< false if the path is not a volume; then nothing else is set
    bool removable = false;
    bool writable = false;
    bool unmountable = false;
    std::string description;
    std::string type;
};

/// Applications and volumes of the user's session. Main thread only.
class Workspace {
public:
    virtual ~Workspace() = default;

    /// Starts a bundle's main executable, detached: in a session of its own, its standard streams on the null
    /// device, no descriptor inherited. Returns true once the program is running. A refused launch is logged
    /// and returns false; nothing throws.
    virtual bool launchApplication(const std::string& bundlePath,
                                   const std::vector<std::string>& arguments) = 0;

    /// Returns the identifiers of the user's running applications that have this identifier, one for each
    /// process.
    virtual std::vector<std::string> runningApplications(const std::string& bundleIdentifier) = 0;

    /// Returns the paths of the mounted volumes that are not on the network, those below /Volumes first.
    virtual std::vector<std::string> mountedLocalVolumePaths() = 0;

    virtual FileSystemInfo fileSystemInfo(const std::string& volumePath) = 0;
};

} // namespace join::platform
