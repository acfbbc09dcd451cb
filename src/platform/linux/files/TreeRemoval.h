#pragma once

#include <string>

namespace join::platform {

/// Removes a file, link or whole folder tree. Links are removed, never followed. Folders of ours that their
/// mode keeps us out of are opened up on the way. False when nothing was there or something could not be
/// removed; a tree deeper than some hundred folders is such a thing.
bool removeTree(const std::string& path);

/// The same of a name in an open folder.
bool removeTreeIn(int folder, const char* name);

} // namespace join::platform
