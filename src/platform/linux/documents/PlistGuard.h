#pragma once

#include <string_view>

namespace join::platform {

/// The two forms in which property lists are read.
enum class PlistForm { none, xml, binary };

/// The form that the bytes claim to have, by how they begin: "bplist00"; or, after a byte order mark and
/// white space,
/// "<?xml", "<!DOCTYPE plist" or "<plist".
PlistForm plistFormOf(std::string_view bytes);

/// Whether a library that builds every object of the list in memory may be given these bytes: it cannot be
/// made to read outside them, to recurse deeply or for ever, or to build much more than an honest list would.
/// They may still be no property list.
///
/// The forms are Apple's "-//Apple//DTD PLIST 1.0" and "bplist00"; the latter is described at the head of
/// CFBinaryPList.c in the published sources of CoreFoundation. In a binary list objects refer to each other
/// by number, so that a few bytes can describe a cycle, or a tree that doubles with every level.
bool isReasonablePropertyList(std::string_view bytes);

} // namespace join::platform
