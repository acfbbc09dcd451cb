#pragma once

#include "platform/Value.h"

#include <optional>
#include <string>
#include <string_view>

namespace join::platform {

/// The two forms of property lists, a parser for each. What PropertyLists::parse() says holds for both, but
/// that the caller limits the size. Both take time and memory in proportion to it at most.

/// Apple's "-//Apple//DTD PLIST 1.0". Declarations in the document itself and entities other than XML's own
/// are refused.
std::optional<Value> parseXmlPropertyList(std::string_view bytes);

/// Apple's "bplist00", described at the head of CFBinaryPList.c in the published sources of CoreFoundation.
/// Its objects refer to each other by number, so that a few bytes can describe a cycle, or a tree that
/// doubles with every level: the limits hold for the tree. Objects outside it are not looked at.
std::optional<Value> parseBinaryPropertyList(std::string_view bytes);

/// A date as text, given in seconds since the beginning of 2001. Those that no calendar has are the first or
/// last.
std::string dateText(double seconds);

/// Data as text: "<0fe1>".
std::string dataText(std::string_view bytes);

} // namespace join::platform
