#pragma once

#include <string>

namespace join::platform {

/// The folders of the user and of the system, all absolute. Any thread.
class Paths {
public:
    virtual ~Paths() = default;

    /// The user's home folder, without a separator at its end unless it is "/".
    virtual std::string home() = 0;

    /// The user's Library folder. Once the program has started it exists, and is private to the user if the
    /// program made it; unless the home takes none.
    virtual std::string userLibrary() = 0;

    /// The Applications folder of the local domain.
    virtual std::string localApplications() = 0;

    /// A folder for temporary files, private to the user, with a separator at its end; made when it is
    /// missing. Throws Exception when there is none that is safe to use.
    virtual std::string temporary() = 0;
};

} // namespace join::platform
