#pragma once

#include "images/Volume.h"

#include <string>
#include <string_view>

/// HFS+ volumes with what a Mac's file system leaves in them, as Apple's Technical Note TN1150 describes it.
/// They need xorrisofs and throw std::runtime_error.
namespace join::tools {

/// The folder's content as an HFS+ volume that has been used on a Mac: beside it there are the stores of hard
/// links, one of them with a file that was removed while it was open, and the journal.
std::string macVolume(const VolumeSource& source);

/// The same, with two files in addition, "one name" and "another name", that are hard links to one.
std::string macVolumeWithHardLinks(const VolumeSource& source);

/// Puts another name, of the same length in ASCII, in the place of one wherever the catalogue has it.
std::string renamedInCatalogue(std::string volume, std::string_view from, std::string_view to);

/// Puts other bytes, as many, in the place of some that must be there.
std::string replaced(std::string bytes, std::string_view before, std::string_view after);

} // namespace join::tools
