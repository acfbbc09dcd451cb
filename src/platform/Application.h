#pragma once

#include <string>

namespace join::platform {

/// What the application tells its delegate, on the main thread, in this order.
class ApplicationDelegate {
public:
    virtual ~ApplicationDelegate() = default;

    /// Before the run loop starts.
    virtual void awakeFromNib() = 0;
    /// A URL that started the program is delivered between these two.
    virtual void applicationWillFinishLaunching() = 0;
    virtual void applicationDidFinishLaunching() = 0;

    /// The user opens the running application again and sees no window of it. Shows one when work goes on;
    /// false when there is nothing to show, and a new process may take over.
    virtual bool applicationShouldHandleReopen() = 0;

    virtual void applicationWillTerminate() = 0;
};

struct SystemVersion {
    int major = 0;
    int minor = 0;
    int maintenance = 0;
};

/// What a system counts as whose own number says nothing about its age.
inline constexpr SystemVersion oldestSupported{.major = 11};

/// Where the system says its name and version: an XML property list with the texts ProductName and
/// ProductVersion.
inline constexpr const char* systemVersionPath = "/System/Library/CoreServices/SystemVersion.plist";

/// The running program and its main run loop. Main thread only.
class Application {
public:
    virtual ~Application() = default;

    /// Tells the delegate that the program starts, then runs the loop until the program is terminated.
    [[noreturn]] virtual void run(ApplicationDelegate& delegate) = 0;

    /// Ends the program with status 0, after telling the delegate. Never returns to its caller.
    [[noreturn]] virtual void terminate() = 0;

    /// Ends the process with status 0 at once, telling nobody.
    [[noreturn]] virtual void exitImmediately() = 0;

    /// The absolute path of the bundle that this program runs from.
    virtual std::string bundlePath() = 0;
    virtual std::string bundleIdentifier() = 0;

    /// The operating system's version; zeros for what cannot be told.
    virtual SystemVersion systemVersion() = 0;
};

} // namespace join::platform
