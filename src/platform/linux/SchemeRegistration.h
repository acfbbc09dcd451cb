#pragma once

#include "platform/Log.h"
#include "platform/linux/SystemRoot.h"

#include <functional>
#include <string>
#include <vector>

namespace join::platform {

/// Makes the program the desktop's default handler of its URL scheme: by a desktop entry of the user, and by
/// the desktop's own tools, which a helper program runs. Main thread only.
class SchemeRegistration {
public:
    /// Starts the program register-scheme with these arguments and does not wait for it. May throw.
    using StartHelper = std::function<void(const std::vector<std::string>& arguments)>;

    /// The real path of the running bundle. The log is used as long as this object lives.
    SchemeRegistration(SystemRoot root, std::string runningBundle, Log& log, StartHelper startHelper);

    /// Looks whether all is as it should be, and mends what is not. Reads a few small files and waits for no
    /// program; may be called at any time again. Never throws; what goes wrong is one line in the log.
    ///
    /// The entry starts the Join in /Applications when there is one, since that copy is kept up to date and
    /// stays where it is, else the running bundle.
    void ensure(const std::string& scheme, const std::string& bundleIdentifier);

private:
    void tryToEnsure(const std::string& scheme, const std::string& bundleIdentifier);
    std::string entryText(const std::string& bundleIdentifier) const;

    SystemRoot root_;
    std::string runningBundle_;
    Log& log_;
    StartHelper startHelper_;
    std::vector<std::string> started_; ///< the arguments of the helper that was started last
    std::string lastFailure_;
};

} // namespace join::platform
