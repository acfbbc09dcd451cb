#pragma once

#include "platform/Value.h"

#include <string_view>

namespace join {

class JoinSessionDetails;

/// Returns the "meeting" object of a session check's answer, found by descending "response", "result",
/// "meeting", or nullptr if a level is missing. Throws platform::Exception if a level is present but not an
/// object.
const platform::Value* meetingOf(const platform::Value& answer);

/// Copies the "meeting" object into the session state, member by member in the document's order, ignoring
/// unknown members. Throws platform::Exception at the first member of a wrong type; the members before it
/// have been copied by then.
void applyMeeting(const platform::Value& meeting, JoinSessionDetails& details);

/// Returns whether a text means yes: optional white space, a sign and zeros, followed by one of Y, y, T, t or
/// 1 to 9.
bool truthOfText(std::string_view text);

} // namespace join
