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

/// Runs the whole program: its operations carry the join from the start to the running agent. Each catches
/// and logs whatever its steps throw, and returns normally. Main thread only.
class AppDelegate final : public platform::ApplicationDelegate {
public:
    // Start-up: AppDelegate.cpp
    void awakeFromNib() override;
    void applicationWillFinishLaunching() override;
    void applicationDidFinishLaunching() override;
    bool applicationShouldHandleReopen() override;
    void applicationWillTerminate() override;

    /// Returns whether the operating system is version 10.9 or later.
    static bool checkCompatibility();

    /// Reads the join parameter file. Returns whether it came with a freshly downloaded Join app.
    static bool firstTimeCheck();

    /// Closes the progress window and quits. Never returns.
    void terminate() const;

    // The join: JoinFlow.cpp, in the order in which it happens
    /// Handles a launch URL, given as raw bytes.
    void handleGetURLEvent(const std::string& url);
    void joinAppVersionCheck();

    /// Checks the Crash Detector, then the agent. Every run with an up-to-date Join app ends up here.
    void versionCheckChain();
    static bool isCrashDetectorUpdateNeeded();
    void downloadCrashDetector() const;
    void tavoAppVersionCheck();

    /// Called when a download of the agent image has failed: tries again, or gives up and tells the user.
    void retryDownloading() const;

    /// Starts the installed agent and then the Crash Detector. Downloads the agent if it is missing.
    void appLaunch();
    void crashDetectorLaunch() const;

    // These live for the whole run. awakeFromNib creates either the first alone or all the others.
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
