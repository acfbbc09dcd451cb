#pragma once

#include "platform/FileManager.h"

#include <string>
#include <string_view>
#include <vector>

namespace join::platform {

/// The distribution's name and version, as its os-release file has them.
struct SystemRelease {
    std::string name = "Linux";
    std::string version; ///< empty when it has none
};

/// Reads an os-release file: lines NAME=value, where the value is one word of a POSIX shell, quoted or not;
/// "#" starts a comment line. The last of several lines for one name counts, lines of any other form do not.
SystemRelease parseOsRelease(std::string_view text);

/// The property list for a release. A version that is not one to three numbers with dots between, or whose
/// first number is below 11, is given as 11.0: such a number counts the distribution's own releases, or there
/// is none, and neither says that the system is older than the ones that the program runs on.
std::string systemVersionList(const SystemRelease& release);

/// Makes the system's version list when it is missing, from the first of these files that can be read. True
/// when it is there afterwards.
bool makeSystemVersionFile(FileManager& files, const std::vector<std::string>& osReleasePaths = {
                                                   "/etc/os-release", "/usr/lib/os-release"});

} // namespace join::platform
