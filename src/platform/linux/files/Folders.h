#pragma once

#include "platform/linux/files/Descriptor.h"

#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace join::platform {

/// An absolute path with its empty and "." components gone and every ".." resolved in the text alone: nothing
/// is looked up, links are not followed, and nothing climbs above "/". Only "/" itself ends with a separator.
std::string normalised(std::string_view absolutePath);

/// The path with the links resolved of all that exists of it; itself when that cannot be done.
std::string withoutLinks(const std::string& path);

/// The folder that a normalised path lies in, and its last component.
std::string parentOf(const std::string& path);
std::string nameOf(const std::string& path);

/// The absolute path in an environment variable; nothing when it is unset or anything else.
std::optional<std::string> absoluteFromEnvironment(const char* name);

/// Whether a folder stands there; a link to one does not count.
bool isFolder(const std::string& path);

/// Makes a folder and its missing parents with that mode, less the umask. True when a folder is there
/// afterwards; else errno says why not.
bool makeFolders(const std::string& path, mode_t mode);

/// Opens a folder of the user that nobody else can reach, with these flags; not open for any other.
Descriptor openPrivateFolder(int parent, const char* name, int flags);

/// The names in an open folder, without "." and ".."; nothing on an error.
std::optional<std::vector<std::string>> namesIn(int folder);

/// Removes a file, link or whole folder tree. Links are removed, never followed. Folders of ours that their
/// mode keeps us out of are opened up on the way. False when nothing was there or something could not be
/// removed; a tree deeper than some hundred folders is such a thing.
bool removeTree(const std::string& path);

/// The same of a name in an open folder.
bool removeTreeIn(int folder, const char* name);

} // namespace join::platform
