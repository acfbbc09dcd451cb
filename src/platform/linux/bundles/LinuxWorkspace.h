#pragma once

#include "platform/Bundles.h"
#include "platform/Log.h"
#include "platform/Tasks.h"
#include "platform/Workspace.h"
#include "platform/linux/files/SystemRoot.h"

#include <functional>

namespace join::platform {

/// Finds applications in /proc. Volumes are the folders that stand for disk images, and the system's mounts.
class LinuxWorkspace : public Workspace {
public:
    /// Starts a program, given by its real path, as launchApplication() does. Returns false if it cannot be
    /// started.
    using Launcher = std::function<bool(const Program&)>;

    /// The given services must outlive this object.
    LinuxWorkspace(const SystemRoot& root, Bundles& bundles, Log& log, Launcher launchDetached);

    bool launchApplication(const std::string& bundlePath, const std::vector<std::string>& arguments) override;
    std::vector<std::string> runningApplications(const std::string& bundleIdentifier) override;
    std::vector<std::string> mountedLocalVolumePaths() override;
    FileSystemInfo fileSystemInfo(const std::string& volumePath) override;

private:
    std::string identifierOf(const std::string& realBundlePath);

    const SystemRoot& root_;
    Bundles& bundles_;
    Log& log_;
    Launcher launchDetached_;
};

} // namespace join::platform
