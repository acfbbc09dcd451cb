#pragma once

#include <string_view>

namespace join::platform {

/// The part of isReasonablePropertyList() that looks at bytes beginning with "bplist00". Every object that
/// the top one leads to is looked at once; an object that no other refers to is not looked at.
bool isReasonableBinaryPlist(std::string_view bytes);

} // namespace join::platform
