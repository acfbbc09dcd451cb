#pragma once

#include "base/Text.h"

#include <string_view>

namespace join {

class LogUpload;

/// A step of the join has failed: sends the logs with a comment, and puts the network locations into the
/// log. Main thread only, as below.
void sendJoinLogTask(LogUpload& upload, const Text& comment);

/// A milestone of the join has been reached: puts the network locations into the log.
void joinFeatureTrackTask(std::string_view milestone);

} // namespace join
