#pragma once

#include <string>

namespace join::platform {

/// The folders of the user and of the system, all absolute. Any thread.
class Paths {
public:
    virtual ~Paths() = default;

    /// Returns the user's home folder, without a trailing separator unless it is "/".
    virtual std::string home() = 0;

    /// Returns the user's Library folder. It exists once the program has started, unless it cannot be created
    /// in the home folder. If the program created it, it is private to the user.
    virtual std::string userLibrary() = 0;

    /// Returns the Applications folder of the local domain.
    virtual std::string localApplications() = 0;

    /// Returns a folder for temporary files, private to the user, with a trailing separator; creates it if it
    /// is missing. Throws Exception if there is none that is safe to use.
    virtual std::string temporary() = 0;
};

} // namespace join::platform
