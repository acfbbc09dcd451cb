#pragma once

#include <string>

namespace join {

/// The one place for each path. All are the system's paths, absolute.

/// Returns the folder that contains the running Join.app.
std::string runningFolder();

/// The installed Join app: in the local domain's Applications folder, and in the user's own.
std::string systemJoinCopy();
std::string homeJoinCopy();

/// Returns the user's own Applications folder.
std::string homeApplicationsFolder();

/// The support folder, with a trailing separator, and its contents.
std::string supportFolder();
std::string installedAgent();
std::string installedCrashDetector();
std::string agentImage();
std::string crashDetectorImage();
std::string parameterFile();
std::string joinDetailsFile();

/// The product's log folder and, inside it, the Join app's.
std::string productLogFolder();
std::string joinLogFolder();

} // namespace join
