#pragma once

#include "platform/Value.h"

#include <string_view>

namespace join {

class JoinSessionDetails;

/// The "meeting" object of a session check's answer, found by descending "response", "result", "meeting";
/// nullptr when a level is missing. Throws platform::Exception when a level is there but is no object.
const platform::Value* meetingOf(const platform::Value& answer);

/// Copies what the "meeting" object tells into the session state, member by member in the document's order;
/// members that it does not know are ignored. Throws platform::Exception at the first member of a wrong type;
/// the members before it have been copied then.
void applyMeeting(const platform::Value& meeting, JoinSessionDetails& details);

/// Whether a text means yes: after white space, a sign and zeros, it goes on with one of Y, y, T, t or 1
/// to 9.
bool truthOfText(std::string_view text);

} // namespace join
