#pragma once

#include "platform/Paths.h"
#include "platform/linux/files/Descriptor.h"
#include "platform/linux/files/SystemRoot.h"

namespace join::platform {

/// Returns the real path of the bundle that the program runs from: its executable is
/// BUNDLE/Contents/MacOS/NAME. For an executable outside a bundle, the folder that contains it.
std::string runningBundle();

/// The folders of the user. The home is $HOME as it was when this object was created, or else that of the
/// password entry, or else "/".
class LinuxPaths : public Paths {
public:
    LinuxPaths();

    /// Creates the Library folder, private to the user, if it is missing, and removes what an earlier run
    /// left in the temporary folder of the user's cache. Called once, at the start of the program. Returns
    /// false if the Library folder does not exist afterwards; errno then says why.
    bool prepare();

    /// Opens the folder "tavojoin" in the user's cache, creating it if it is missing. Others may have access
    /// to the cache, but not to that folder. Throws Exception if it is a link or another user's.
    Descriptor openCache() const;

    std::string home() override { return home_; }
    std::string userLibrary() override;
    std::string localApplications() override { return "/Applications"; }

    /// Returns the path by which the logic knows the bundle at a real path. A bundle in the Applications
    /// folder of the system or of the user gets its path there, however links lead to it: the logic compares
    /// texts.
    std::string bundlePath(const std::string& realPath, const SystemRoot& root);

    /// Returns $TMPDIR if it is private to the user, or else a folder in the user's cache.
    std::string temporary() override;

private:
    void removeTemporary() const;
    std::string cache() const;

    std::string home_;
};

} // namespace join::platform
