#pragma once

#include "platform/Paths.h"
#include "platform/linux/files/Descriptor.h"
#include "platform/linux/files/SystemRoot.h"

namespace join::platform {

/// The real path of the bundle that the program runs from: its executable is BUNDLE/Contents/MacOS/NAME. One
/// that lies in no bundle is taken as one in the folder it lies in.
std::string runningBundle();

/// The folders of the user. Their home is $HOME as it was when this was made, or else the one of the password
/// entry, or else "/".
class LinuxPaths : public Paths {
public:
    LinuxPaths();

    /// Makes the Library folder, private to the user, when it is missing, and takes away what an earlier run
    /// has left in the temporary folder of the user's cache. Called once, when the program starts. False when
    /// there is no such folder now; errno then says why.
    bool prepare();

    /// Opens the folder "tavojoin" in the user's cache, and makes it when it is missing. The cache may be
    /// shared with others; that folder is private. Throws Exception when it is a link or another user's.
    Descriptor openCache() const;

    std::string home() override { return home_; }
    std::string userLibrary() override;
    std::string localApplications() override { return "/Applications"; }

    /// The path by which the logic knows the bundle at a real path. One in the Applications folder of the
    /// system or of the user is there, whatever links lead there: the logic compares texts.
    std::string bundlePath(const std::string& realPath, const SystemRoot& root);

    /// $TMPDIR when it is private to the user, else a folder in the user's cache.
    std::string temporary() override;

private:
    void removeTemporary() const;
    std::string cache() const;

    std::string home_;
};

} // namespace join::platform
