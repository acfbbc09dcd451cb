#pragma once

#include <string>

namespace join::platform {

/// Copies a file, link or whole folder tree to a path where nothing exists, with permissions (without
/// set-user, set-group and sticky bits, and those that let others write), access and modification times, and links, which are copied as text
/// and never followed. Files share their blocks with the originals if the file system can. Returns false for
/// devices, pipes and sockets, for a tree deeper than some 130 folders, for a copy into the source itself,
/// and on any other error, with the reason in errno; what was created by then stays.
/// Files of the user that have no second name are given one, rather than copied, if the caller allows that.
bool copyTree(const std::string& source, const std::string& target, bool mayLink = false);

} // namespace join::platform
