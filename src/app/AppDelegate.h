#pragma once

#include "diag/LogUpload.h"
#include "install/JoinDMGDownloader.h"
#include "install/TavoDMGDownloader.h"
#include "platform/Application.h"
#include "ui/ErrorWindow.h"
#include "ui/TavoJoinMainWindowHandler.h"
#include "ui/TavoJoinWindowHandler.h"

#include <memory>
#include <string>

namespace join {

/// Owns the run of the program: its operations carry the join from the start to the running agent. Each
/// catches what its steps raise, logs it and returns; nothing is told to the caller. Main thread only.
class AppDelegate final : public platform::ApplicationDelegate {
public:
    // Start-up: AppDelegate.cpp
    void awakeFromNib() override;
    void applicationWillFinishLaunching() override;
    void applicationDidFinishLaunching() override;
    bool applicationShouldHandleReopen() override;
    void applicationWillTerminate() override;

    /// Whether the operating system is version 10.9 or later.
    static bool checkCompatibility();

    /// Reads the join parameter file; whether it came with a freshly downloaded Join app.
    static bool firstTimeCheck();

    /// Closes the progress window and quits. Never returns to its caller.
    void terminate();

    // The join: JoinFlow.cpp, in the order in which it happens
    /// Acts on a launch URL, given as its bytes came.
    void handleGetURLEvent(const std::string& url);
    void joinAppVersionCheck();

    /// Crash Detector and agent in turn: the way of every run whose Join app is current.
    void versionCheckChain();
    static bool isCrashDetectorUpdateNeeded();
    void downloadCrashDetector();
    void tavoAppVersionCheck();

    /// A download of the agent image has failed: tries again, or gives up and says so.
    void retryDownloading();

    /// Starts the installed agent and goes on to the Crash Detector, or starts the download of a missing
    /// agent.
    void appLaunch();
    void crashDetectorLaunch();

    // What lives for the whole run. Empty before awakeFromNib, which makes the first alone or all the others.
    std::unique_ptr<ErrorWindow> errorWindow;                  ///< only on an unsupported system
    std::unique_ptr<TavoJoinWindowHandler> tavoJoinWindow;     ///< the progress window
    std::unique_ptr<TavoJoinMainWindowHandler> joinMainWindow; ///< the key and e-mail window
    std::unique_ptr<TavoDMGDownloader> tavoDmgDownloader;
    std::unique_ptr<JoinDMGDownloader> joinDmgDownloader;
    std::unique_ptr<LogUpload> logUpload;

private:
    void registerForLaunchUrls();
    void registerNotificationHandlers();
    void joinForTheFirstTime();
};

} // namespace join
