#pragma once

#include "platform/Paths.h"

namespace join::platform {

/// The folders of the user. Their home is $HOME as it was when this was made, or else the one of the password
/// entry.
class LinuxPaths : public Paths {
public:
    /// Throws Exception when the user has no home folder.
    LinuxPaths();

    /// Makes the Library folder, private to the user, when it is missing, and takes away what an earlier run
    /// has left in the temporary folder of the user's cache. Called once, when the program starts. Throws
    /// Exception when the folder cannot be made.
    void prepare();

    std::string home() override { return home_; }
    std::string userLibrary() override;
    std::string localApplications() override { return "/Applications"; }

    /// $TMPDIR when it is private to the user, else a folder in the user's cache.
    std::string temporary() override;

private:
    std::string temporaryInCache() const;

    std::string home_;
};

} // namespace join::platform
