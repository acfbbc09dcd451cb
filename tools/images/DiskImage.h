#pragma once

#include <filesystem>
#include <map>
#include <string_view>

namespace join::tools {

/// The kinds of Apple's disk image (UDIF) differ in how their chunks are stored; hfsPlus is the bare
/// volume that they hold, iso an ISO 9660 volume with Rock Ridge.
enum class ImageKind { udifZlib, udifBzip2, udifAdc, udifLzfse, udifLzma, udifPlain, hfsPlus, iso };

/// The kinds by their names on command lines.
const std::map<std::string_view, ImageKind>& imageKinds();

/// Makes a disk image of the folder's content: a volume of that name (1 to 32 bytes of UTF-8). Keeps modes,
/// modification times in whole seconds and symbolic links, whatever they point to; everything belongs to
/// root. As on a Mac, an HFS+ volume holds names in decomposed Unicode, and a ":" in them as "/", which 7zz
/// shows as "_".
///
/// The same content gives the same bytes, except for the time of creation in the volume. The image replaces
/// an older one only when it is whole. Memory does not grow with the files' sizes.
///
/// The program xorrisofs (Debian package xorriso) must be on the PATH. Throws std::runtime_error.
void makeDiskImage(const std::filesystem::path& folder, std::string_view volumeName, ImageKind kind,
                   const std::filesystem::path& image);

} // namespace join::tools
