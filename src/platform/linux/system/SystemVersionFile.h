#pragma once

#include "platform/FileManager.h"

#include <string>

namespace join::platform {

/// Returns the property list for a distribution's name and version. The version becomes 11.0 if it is not one
/// to three numbers separated by dots, or if its first number is below 11. Such a number counts the
/// distribution's own releases and does not say that the system is too old for the program; nor does a missing
/// one.
std::string systemVersionList(const std::string& name, const std::string& version);

/// Creates the system's version list if it is missing, from the distribution's os-release file. Returns true
/// if it exists afterwards.
bool makeSystemVersionFile(FileManager& files);

} // namespace join::platform
