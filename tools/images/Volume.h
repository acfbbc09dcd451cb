#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

/// The volumes that disk images hold. They are made by the program xorrisofs (Debian package xorriso), which
/// must be on the PATH. All throw std::runtime_error.
namespace join::tools {

/// What a volume is made from.
struct VolumeSource {
    std::filesystem::path folder;
    std::string name;
    std::filesystem::path alsoFolder = {}; ///< its content is added to that of the other; empty for none
};

enum class VolumeKind {
    hfsPlus, ///< a whole number of 512-byte sectors
    iso      ///< ISO 9660 with Rock Ridge names, modes and links
};

/// Receives a volume's bytes piece by piece; an exception ends the work.
using ByteSink = std::function<void(std::string_view)>;

/// Makes a volume of any size: it passes through a temporary file.
void makeVolume(VolumeKind kind, const VolumeSource& source, const ByteSink& sink);

/// The same for one that the memory holds.
std::string volumeOf(VolumeKind kind, const VolumeSource& source);

} // namespace join::tools
