#pragma once

#include <string>

namespace join {

/// Where things are: the one place for each path. All are the system's paths, absolute.

/// The folder that holds the running Join.app.
std::string runningFolder();

/// The Join app in the Applications folder of the local domain, and in the user's own.
std::string systemJoinCopy();
std::string homeJoinCopy();

/// The user's own Applications folder.
std::string homeApplicationsFolder();

/// The support folder, with a separator at its end, and what lies in it.
std::string supportFolder();
std::string installedAgent();
std::string installedCrashDetector();
std::string agentImage();
std::string crashDetectorImage();
std::string parameterFile();
std::string joinDetailsFile();

/// The product's log folder and, within it, the Join app's.
std::string productLogFolder();
std::string joinLogFolder();

} // namespace join
