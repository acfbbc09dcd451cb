#pragma once

#include "base/Text.h"

#include <string>

namespace join {

/// Removes what is installed but empty or cut off, as by a power cut: an application bundle without a readable
/// information property list or whose executable has no bytes, a Crash Detector without bytes. It is then
/// missing, and installed anew. Logs what it removes.
void removeDamagedPrograms();

/// Returns the version of an application bundle: "(null)" if it has none, absent if there is no bundle.
Text installedVersion(const std::string& bundle);

/// Returns the version of the installed Crash Detector, or an absent text if it has none.
Text crashDetectorVersion();

/// Removes the Crash Detector, if it is installed. A failure is logged.
void deleteOlderCrashDetector();

/// Starts the installed Crash Detector as a child process. Throws platform::Exception if that fails.
void startCrashDetector();

/// Starts the application bundle at the path through the workspace, with this run's milestones as arguments.
/// Returns false only if an exception was thrown: a launch that the platform refuses counts as successful.
bool workspaceLaunchApplication(const std::string& bundlePath);

bool isTavoAppRunning();

/// Removes the agent and its image, if they exist.
void removeOutdatedAgent();

} // namespace join
