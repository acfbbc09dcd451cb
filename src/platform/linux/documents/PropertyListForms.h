#pragma once

#include "platform/Value.h"

#include <optional>
#include <string>
#include <string_view>

namespace join::platform {

/// The two forms of property lists, with one parser for each. Both keep the promises of
/// PropertyLists::parse(), but the caller limits the size. Time and memory are at most proportional to it.

/// Parses Apple's "-//Apple//DTD PLIST 1.0". Refuses declarations in the document itself and entities other
/// than XML's own.
std::optional<Value> parseXmlPropertyList(std::string_view bytes);

/// Parses Apple's "bplist00", described at the head of CFBinaryPList.c in the published sources of
/// CoreFoundation. Its objects refer to each other by number, so a few bytes can describe a cycle, or a tree
/// that doubles with every level: the limits apply to the tree. Objects outside it are ignored.
std::optional<Value> parseBinaryPropertyList(std::string_view bytes);

/// Returns data as text: "<0fe1>".
std::string dataText(std::string_view bytes);

} // namespace join::platform
