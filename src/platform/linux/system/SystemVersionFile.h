#pragma once

#include "platform/FileManager.h"

#include <string>
#include <string_view>
#include <vector>

namespace join::platform {

/// The distribution's name and version from its os-release file.
struct SystemRelease {
    std::string name = "Linux";
    std::string version; ///< empty if it has none
};

/// Reads an os-release file: lines NAME=value, where the value is one word of a POSIX shell, quoted or not;
/// "#" starts a comment line. If a name occurs several times, the last line counts; malformed lines do not.
SystemRelease parseOsRelease(std::string_view text);

/// Returns the property list for a release. The version becomes 11.0 if it is not one to three numbers
/// separated by dots, or if its first number is below 11. Such a number counts the distribution's own
/// releases and does not say that the system is too old for the program; nor does a missing one.
std::string systemVersionList(const SystemRelease& release);

/// Creates the system's version list if it is missing, from the first of these files that can be read.
/// Returns true if it exists afterwards.
bool makeSystemVersionFile(FileManager& files, const std::vector<std::string>& osReleasePaths = {
                                                   "/etc/os-release", "/usr/lib/os-release"});

} // namespace join::platform
