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
/// A value that was absent when the file was written appears as "(null)".
inline constexpr std::string_view joinParameterHeader = "TAVO_MEETING_IND\n";

/// Returns what follows a file's header, or nothing if the file is not UTF-8 or shorter than the header.
std::optional<std::string_view> joinParameterBody(std::string_view file);

/// An item name that the reader knows, and the property that it sets.
struct JoinParameter {
    std::string_view name;
    Atomic<Text> JoinSessionDetails::*property;
};

/// Returns the first entry in the table whose name the item begins with, or nullptr if there is none.
const JoinParameter* joinParameterOf(std::string_view item);

/// Returns an item's value: the item without any occurrence of the name followed by "=".
std::string joinParameterValue(std::string_view item, std::string_view name);

/// Returns why the administrator's policy does not allow the web server that a body names, or nothing if it
/// names none or allowed ones only.
Text reasonToRefuseParameters(std::string_view body);

/// Reads a file of this format through the file manager. Returns its body, or nothing if the file is missing
/// or has no body; then the log says why, under the operation's name.
Text readJoinParameterFile(std::string_view method, const std::string& path);

} // namespace join
