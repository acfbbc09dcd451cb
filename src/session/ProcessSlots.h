#pragma once

#include <memory>
#include <string>

namespace join {

namespace platform {
class FileManager;
class Timer;
} // namespace platform

class ErrorWindow;
class JoinDMGDownloader;
class TavoDMGDownloader;
class TavoJoinMainWindowHandler;
class TavoJoinWindowHandler;

/// What the delegate's module holds for the whole run. Main thread only.
struct ProcessSlots {
    ProcessSlots();
    ~ProcessSlots();
    ProcessSlots(ProcessSlots&& other) noexcept;
    ProcessSlots& operator=(ProcessSlots&& other) noexcept;

    bool launchApp = false;                                    ///< a launch URL has been handled in this run
    std::unique_ptr<ErrorWindow> errorWindow;                  ///< only on an unsupported system
    std::string tavoJoinLogFolder;                             ///< the Join log folder
    platform::FileManager* tavoDirectoryManager = nullptr;     ///< shared, used for every file operation
    std::unique_ptr<platform::Timer> loggingTimer;             ///< the log rotation timer
    std::string tavoMeetingNativeFolder;                       ///< the support folder
    std::unique_ptr<TavoJoinWindowHandler> tavoJoinWindow;     ///< the progress window
    std::unique_ptr<TavoJoinMainWindowHandler> joinMainWindow; ///< the key and e-mail window
    std::unique_ptr<TavoDMGDownloader> tavoDmgDownloader;
    std::unique_ptr<JoinDMGDownloader> joinDmgDownloader;
    std::string joinParametersTavoJoinFilePath; ///< the delivered join parameter file
};

/// The one set of slots of this process.
ProcessSlots& slots();

/// Empties these slots and those of every other module, the singletons included. For tests, which each start
/// anew.
void emptyProcessSlots();

} // namespace join
