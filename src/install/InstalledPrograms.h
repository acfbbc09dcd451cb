#pragma once

#include "base/Text.h"

#include <string>

namespace join {

/// The version of an application bundle as text: "(null)" when it has none, absent when nothing is there.
Text installedVersion(const std::string& bundle);

/// The version of the installed Crash Detector, absent when it has none.
Text crashDetectorVersion();

/// Removes the Crash Detector, if there is one. A failure is logged.
void deleteOlderCrashDetector();

/// Starts the installed Crash Detector as a child process. Throws platform::Exception when that fails.
void startCrashDetector();

/// Starts the application bundle at the path through the workspace, with the milestones of this run as
/// arguments. False only when something was raised on the way: a launch that the platform refuses counts as
/// one.
bool workspaceLaunchApplication(const std::string& bundlePath);

bool isTavoAppRunning();

/// Removes the agent and its image, as far as they are there.
void removeOutdatedAgent();

} // namespace join
