#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <sys/types.h>
#include <vector>

namespace join::platform {

/// An absolute path with its empty and "." components gone and every ".." resolved in the text alone: nothing
/// is looked up, links are not followed, and nothing climbs above "/". Only "/" itself ends with a separator.
std::string normalised(std::string_view absolutePath);

/// The folder that a normalised path lies in, and its last component.
std::string parentOf(const std::string& path);
std::string nameOf(const std::string& path);

/// Makes a folder and its missing parents with that mode, less the umask. True when a folder is there
/// afterwards; else errno says why not.
bool makeFolders(const std::string& path, mode_t mode);

/// Whether both are paths of one folder, whatever links lead there.
bool isSameFolder(const std::string& one, const std::string& other);

/// Whether this is a folder of the user that nobody else can reach.
bool isPrivate(const struct stat& found);

/// The names in an open folder, without "." and ".."; nothing on an error.
std::optional<std::vector<std::string>> namesIn(int folder);

} // namespace join::platform
