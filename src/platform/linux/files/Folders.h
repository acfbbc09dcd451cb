#pragma once

#include "platform/linux/files/Descriptor.h"

#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace join::platform {

/// Returns an absolute path without empty and "." components, and with every ".." resolved purely as text:
/// nothing is looked up, links are not followed, and ".." stops at "/". Only "/" itself ends with a
/// separator.
std::string normalised(std::string_view absolutePath);

/// Returns the path with the links in its existing part resolved, or the path itself if that fails.
std::string withoutLinks(const std::string& path);

/// Return the folder that contains a normalised path, and its last component.
std::string parentOf(const std::string& path);
std::string nameOf(const std::string& path);

/// Returns the absolute path in an environment variable, or nothing if it is unset or not an absolute path.
std::optional<std::string> absoluteFromEnvironment(const char* name);

/// Returns whether a folder exists there; a link to one does not count.
bool isFolder(const std::string& path);

/// Creates a folder and its missing parents, closed to other users. Returns true if the folder exists
/// afterwards; otherwise errno says why not.
bool makeFolders(const std::string& path);

/// Opens a folder and denies all others access to it; what is opened is what is changed. Returns nothing if it
/// is a link, or belongs to another user (EPERM in errno).
Descriptor closeToOthers(int parent, const char* name);

/// Opens a folder with these flags, or nothing unless it belongs to the user and nobody else can access it.
Descriptor openPrivateFolder(int parent, const char* name, int flags);

/// Returns the names in an open folder, or in one at a path relative to it, without "." and "..". Returns
/// nothing on an error.
std::optional<std::vector<std::string>> namesIn(int folder, const char* path = ".");

/// Removes a file, link or whole folder tree. Links are removed, never followed. The user's own folders are
/// made accessible first if their mode requires it. Returns false if nothing was there or something could not
/// be removed, such as a tree deeper than some hundred folders.
bool removeTree(const std::string& path);

/// Does the same for a name in an open folder, which lies that deep in the tree.
bool removeTree(int folder, const char* name, int depth = 0);

} // namespace join::platform
