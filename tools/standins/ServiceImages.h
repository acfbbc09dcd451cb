#pragma once

#include "images/DiskImage.h"
#include "standins/StandIns.h"

#include <filesystem>
#include <string>

namespace join::tools {

inline constexpr std::string_view agentImageName = "TavoMac.dmg";
inline constexpr std::string_view joinImageName = "JoinMac.dmg";

/// The disk images that the web service delivers. Each volume also holds the link to /Applications that a
/// user would drop a program on.
///
///     TavoMac.dmg, volume Tavo:      Tavo.app, TavoCrashDetector (stand-ins)
///     JoinMac.dmg, volume TavoJoin:  Join.app
struct ServiceImages {
    std::filesystem::path folder = {};  ///< gets the images
    std::filesystem::path joinApp = {}; ///< bundle that is copied under the name Join.app
    ImageKind kind = ImageKind::udifZlib;
    std::string agentVersion{defaultAgentVersion};
    std::string crashDetectorVersion{defaultCrashDetectorVersion};
    int payload = 0; ///< megabytes (10^6 bytes) that do not compress, added to the agent's Resources
};

/// Makes both images, in place of older ones; the folder is made when missing. Beside them it must have room
/// for what they hold. Throws std::runtime_error, std::system_error among them.
void makeServiceImages(const ServiceImages& images);

} // namespace join::tools
