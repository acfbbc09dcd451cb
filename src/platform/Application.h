#pragma once

#include <string>

namespace join::platform {

/// What the application tells its delegate, on the main thread, in this order.
class ApplicationDelegate {
public:
    virtual ~ApplicationDelegate() = default;

    /// Before the run loop starts.
    virtual void awakeFromNib() = 0;
    /// If a URL started the program, it is delivered between these two calls.
    virtual void applicationWillFinishLaunching() = 0;
    virtual void applicationDidFinishLaunching() = 0;

    /// Called when the user opens the running application again while none of its windows is visible. Shows a
    /// window if work is in progress. Returns false if there is nothing to show; a new process may then take
    /// over.
    virtual bool applicationShouldHandleReopen() = 0;

    virtual void applicationWillTerminate() = 0;
};

struct SystemVersion {
    int major = 0;
    int minor = 0;
};

/// The version to assume for a system whose own number says nothing about its age.
inline constexpr SystemVersion oldestSupported{.major = 11};

/// Where the system keeps its name and version: an XML property list with the texts ProductName and
/// ProductVersion.
inline constexpr const char* systemVersionPath = "/System/Library/CoreServices/SystemVersion.plist";

/// The running program and its main run loop. Main thread only.
class Application {
public:
    virtual ~Application() = default;

    /// Tells the delegate that the program is starting, then runs the loop until the program is terminated.
    [[noreturn]] virtual void run(ApplicationDelegate& delegate) = 0;

    /// Tells the delegate, then ends the program with status 0. Never returns.
    [[noreturn]] virtual void terminate() = 0;

    /// Ends the process with status 0 at once, without telling anyone.
    [[noreturn]] virtual void exitImmediately() = 0;

    /// Returns the absolute path of the bundle that this program runs from.
    virtual std::string bundlePath() = 0;
    virtual std::string bundleIdentifier() = 0;

    /// Returns the operating system's version; parts that are not known are 0.
    virtual SystemVersion systemVersion() = 0;
};

} // namespace join::platform
