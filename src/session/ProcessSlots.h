#pragma once

#include "platform/Timers.h"
#include "platform/Value.h"
#include "session/JoinSessionDetails.h"

#include <cstdint>
#include <memory>
#include <string>

namespace join {

namespace platform {
class FileManager;
} // namespace platform

/// State shared by every part of the join for the whole run; the windows and the downloads belong to the
/// delegate. Main thread only, except for the session's state.
struct ProcessSlots {
    bool launchApp = false;                                ///< a launch URL has been handled in this run
    std::string tavoJoinLogFolder;                         ///< the Join log folder
    platform::FileManager* tavoDirectoryManager = nullptr; ///< shared, used for every file operation
    std::unique_ptr<platform::Timer> loggingTimer;         ///< the log rotation timer
    std::string tavoMeetingNativeFolder;                   ///< the support folder
    std::string joinParametersTavoJoinFilePath;            ///< the delivered join parameter file
    std::unique_ptr<JoinSessionDetails> joinInfo;          ///< created by JoinSessionDetails::getInstance()
    platform::Value::Dictionary milestones;                ///< those that this run has reached
    std::int32_t logFileNameCount = 0;     ///< the highest generation that the next log rotation writes
    std::int32_t copyCounter = 0;          ///< how often the agent has been copied and launched
    std::int32_t joinDownloadFailures = 0; ///< of the Join app's own image
};

/// Returns the slots of this process.
ProcessSlots& slots();

/// Returns the file manager that every file operation uses.
platform::FileManager& files();

} // namespace join
