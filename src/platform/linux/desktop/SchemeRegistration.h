#pragma once

#include "platform/Log.h"
#include "platform/Tasks.h"
#include "platform/linux/files/SystemRoot.h"

#include <string>

namespace join::platform {

/// The bundle that launch URLs open: the one in /Applications when it can be started, since that copy stays
/// where it is and is kept up to date, else the running one. Real paths.
std::string bundleForLaunchUrls(const SystemRoot& root, const std::string& runningBundle);

/// The files that a registration leaves, of the user whose environment this is.
struct RegistrationFiles {
    explicit RegistrationFiles(const std::string& bundleIdentifier);

    std::string entry;    ///< the desktop entry
    std::string defaults; ///< the user's list of default applications, which belongs to all programs
    std::string mark; ///< holds the facts of the last registration that succeeded; its lock is the helper's
};

/// What a registration of the bundle rests on and has left. The same text as last time means that nothing has
/// changed since.
std::string registrationFacts(const RegistrationFiles& files, const std::string& bundle);

/// Makes the program the desktop's default handler of its URL scheme. The helper program register-scheme does
/// it, which takes long and goes on when this process ends; here it is only found out whether there is
/// anything to do. Main thread only.
class SchemeRegistration {
public:
    /// The real path of the running bundle. The services given outlive this object.
    SchemeRegistration(SystemRoot root, std::string runningBundle, Log& log, Tasks& tasks);

    /// Starts the helper when something has changed since it last succeeded. Reads one small file, waits for
    /// nothing, and never throws: what goes wrong is one line in the log.
    void ensure(const std::string& scheme, const std::string& bundleIdentifier);

private:
    SystemRoot root_;
    std::string runningBundle_;
    Log& log_;
    Tasks& tasks_;
    std::string startedFor_; ///< the facts for which the helper was started last
    std::string lastFailure_;
};

} // namespace join::platform
