#pragma once

#include "images/Volume.h"

#include <string>
#include <string_view>

/// HFS+ volumes with what a Mac's file system leaves in them, as Apple's Technical Note TN1150 describes it.
/// They need xorrisofs and throw std::runtime_error.
namespace join::tools {

/// The folder's content as an HFS+ volume that was used on a Mac, with the journal and the stores of hard
/// links, one of which holds a file that was removed while it was open.
std::string macVolume(const VolumeSource& source);

/// The same with two more files, "one name" and "another name", that are hard links to the same file.
std::string macVolumeWithHardLinks(const VolumeSource& source);

/// Replaces a name, wherever the catalogue has it, with another of the same length in ASCII.
std::string renamedInCatalogue(std::string volume, std::string_view from, std::string_view to);

/// Replaces bytes, which must be there, with as many others.
std::string replaced(std::string bytes, std::string_view before, std::string_view after);

} // namespace join::tools
