#pragma once

#include "images/DiskImage.h"
#include "standins/StandIns.h"

#include <filesystem>
#include <string>

namespace join::tools {

inline constexpr std::string_view agentImageName = "TavoMac.dmg";
inline constexpr std::string_view joinImageName = "JoinMac.dmg";

/// The disk images that the web service delivers. Each volume also holds the link to /Applications on which
/// users drop programs.
///
///     TavoMac.dmg, volume Tavo:      Tavo.app, TavoCrashDetector (stand-ins)
///     JoinMac.dmg, volume TavoJoin:  Join.app
struct ServiceImages {
    std::filesystem::path folder = {};  ///< gets the images
    std::filesystem::path joinApp = {}; ///< bundle that becomes Join.app
    ImageKind kind = ImageKind::udifZlib;
    std::string agentVersion{defaultAgentVersion};
    std::string crashDetectorVersion{defaultCrashDetectorVersion};
    int payload = 0; ///< megabytes (10^6 bytes) that do not compress, added to the agent's Resources
};

/// Makes both images, in place of older ones, and the folder if it is missing. Besides them it needs room for
/// their contents. Throws std::runtime_error, including std::system_error.
void makeServiceImages(const ServiceImages& images);

} // namespace join::tools
