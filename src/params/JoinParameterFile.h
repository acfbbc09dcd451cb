#pragma once

#include "base/Text.h"
#include "session/JoinSessionDetails.h"

#include <string>
#include <string_view>

namespace join {

/// The format of the join parameter files ".joinparameters" and "joinparameters.conf" and of the join details
/// file "tavojoindetails.conf". UTF-8 without a byte-order mark:
///
///   file   = header body
///   header = "TAVO_MEETING_IND" LF        ; 17 characters; a reader skips as many, whatever they are
///   body   = "&" *( item "&" )            ; one line, read as the pieces between the "&"
///   item   = name "=" value               ; nothing is quoted or escaped
///
/// A value that was absent when the file was written stands in it as "(null)".
inline constexpr std::string_view joinParameterHeader = "TAVO_MEETING_IND\n";

/// What a file holds behind its header; nothing when it is not UTF-8 or shorter than the header.
std::optional<std::string_view> joinParameterBody(std::string_view file);

/// An item name that the reader knows, and the property that it sets.
struct JoinParameter {
    std::string_view name;
    Atomic<Text> JoinSessionDetails::*property;
};

/// The first known name, in the order of their table, that the item begins with; nullptr when it begins with
/// none.
const JoinParameter* joinParameterOf(std::string_view item);

/// An item's value: the item without any occurrence of the name and a "=" behind it.
std::string joinParameterValue(std::string_view item, std::string_view name);

/// Reads a file of this format through the file manager. Gives its body; nothing, with a line in the log
/// under the operation's name that says why, when there is no such file or it has none.
Text readJoinParameterFile(std::string_view method, const std::string& path);

} // namespace join
