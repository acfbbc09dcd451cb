#pragma once

#include "platform/Log.h"
#include "platform/Tasks.h"
#include "platform/linux/files/SystemRoot.h"

#include <string>

namespace join::platform {

/// Returns the bundle that launch URLs open: the one in /Applications if it can be started, since that copy
/// stays in place and is kept up to date, or else the running one. Real paths.
std::string bundleForLaunchUrls(const SystemRoot& root, const std::string& runningBundle);

/// The files that a registration leaves for the current user, who is taken from the environment.
struct RegistrationFiles {
    explicit RegistrationFiles(const std::string& bundleIdentifier);

    std::string entry;    ///< the desktop entry
    std::string defaults; ///< the user's list of default applications, shared by all programs
    std::string mark;     ///< the facts of the last successful registration; the helper locks it
};

/// Returns everything that a registration of the bundle depends on and has left. If the text is the same as
/// last time, nothing has changed since.
std::string registrationFacts(const RegistrationFiles& files, const std::string& bundle);

/// Makes the program the desktop's default handler of its URL scheme. The helper program register-scheme does
/// that, because it takes long and must outlive this process; this class only finds out whether there is
/// anything to do. Main thread only.
class SchemeRegistration {
public:
    /// Takes the real path of the running bundle. The given services must outlive this object.
    SchemeRegistration(SystemRoot root, std::string runningBundle, Log& log, Tasks& tasks);

    /// Starts the helper if something has changed since its last success. Reads one small file, does not
    /// wait, and never throws: a failure is one line in the log.
    void ensure(const std::string& scheme, const std::string& bundleIdentifier);

private:
    SystemRoot root_;
    std::string runningBundle_;
    Log& log_;
    Tasks& tasks_;
    std::string startedFor_; ///< the facts for which the helper was last started
    std::string lastFailure_;
};

} // namespace join::platform
