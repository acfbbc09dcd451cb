#include "base/Locations.h"

#include "base/Text.h"
#include "platform/Application.h"
#include "platform/Paths.h"
#include "platform/Services.h"

namespace join {

using platform::services;

std::string runningFolder() {
    return std::string(deletingLastPathComponent(services().application->bundlePath()));
}

std::string systemJoinCopy() {
    return appendingPathComponent(services().paths->localApplications(), "/Join.app");
}

std::string homeApplicationsFolder() { return services().paths->home() + "/Applications"; }

std::string homeJoinCopy() { return homeApplicationsFolder() + "/Join.app"; }

std::string supportFolder() {
    return services().paths->home() + "/Library/Application Support/TavoMeetingNative/";
}

std::string installedAgent() { return supportFolder() + "Tavo.app"; }

std::string installedCrashDetector() { return supportFolder() + "TavoCrashDetector"; }

std::string agentImage() { return supportFolder() + "TavoMac.dmg"; }

std::string crashDetectorImage() { return supportFolder() + "TavoCrashDetectorMac.dmg"; }

std::string parameterFile() { return supportFolder() + "joinparameters.conf"; }

std::string joinDetailsFile() { return supportFolder() + "tavojoindetails.conf"; }

// The doubled separator is intended: it appears in the log lines that name these folders.
std::string productLogFolder() { return services().paths->userLibrary() + "/Logs/" + "/TavoFendel/"; }

std::string joinLogFolder() { return services().paths->userLibrary() + "/Logs/" + "/TavoFendel/Join/"; }

} // namespace join
