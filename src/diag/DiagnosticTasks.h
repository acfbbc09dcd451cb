#pragma once

#include "base/Text.h"

namespace join {

class LogUpload;

/// Called when a step of the join has failed: sends the logs with a comment, and logs the network locations.
/// Main thread only, like the function below.
void sendJoinLogTask(LogUpload& upload, const Text& comment);

/// Called when the join reaches a milestone: logs the network locations.
void joinFeatureTrackTask();

} // namespace join
