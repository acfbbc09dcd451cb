#pragma once

#include <string>

namespace join::platform {

/// Copies a file, link or whole folder tree to a path where nothing stands: permissions (without set-user,
/// set-group and sticky bits), times of access and modification, and links with their own text, which is
/// never followed. Shares the blocks of files where the file system can. False on devices, pipes and sockets,
/// on a tree deeper than some 130 folders, on one that would be copied into itself, and on any other
/// trouble, with the reason in errno; what was made by then stays.
bool copyTree(const std::string& source, const std::string& target);

} // namespace join::platform
