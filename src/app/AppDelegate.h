#pragma once

#include "base/Text.h"
#include "platform/Application.h"
#include "platform/HttpClient.h"
#include "platform/Value.h"

#include <optional>
#include <string>
#include <string_view>

namespace join {

/// Owns the run of the program: its operations carry the join from the start to the running agent. Each
/// catches what its steps raise, logs it and returns; nothing is told to the caller. Main thread only.
class AppDelegate final : public platform::ApplicationDelegate, private platform::ConnectionDelegate {
public:
    // core: start-up and dispatch
    void awakeFromNib() override;
    void applicationWillFinishLaunching() override;
    void applicationDidFinishLaunching() override;
    bool applicationShouldHandleReopen() override;
    void applicationWillTerminate() override;

    /// Whether the operating system is version 10.9 or later.
    bool checkCompatibility();

    /// Reads the join parameter file; whether it came with a freshly downloaded Join app.
    bool firstTimeCheck();

    /// Closes the progress window and quits. Never returns to its caller.
    void terminate();

    // core: agent launch
    /// Starts the installed agent and goes on to the Crash Detector, or starts the download of a missing
    /// agent.
    void appLaunch();
    bool isTavoAppRunning();

    // params: join parameter files
    /// Reads the support folder's parameter file into the session state. Without a usable one the state stays
    /// as it is.
    void readJoinParameters();

    /// Makes the join details file of a first run from the delivered parameter file.
    void createTavoJoinDetails();

    /// Rewrites the parameter file from the session state, as one of a later run.
    void rewriteJoinParameters();

    /// Stores the delivered parameter file and installs copies of the running Join app.
    void copyCurrentJoinAppFile();

    // url: launch URLs and the join details file
    /// Acts on a launch URL, given as its bytes came.
    void handleGetURLEvent(const std::string& url);

    /// Brings the join details file in line with the session state.
    void modifyJoinDetails();

    // server: version decisions
    void joinAppVersionCheck();
    bool isCrashDetectorUpdateNeeded();
    void tavoAppVersionCheck();

    /// Crash Detector and agent in turn: the way of every run whose Join app is current.
    void versionCheckChain();

    /// A download of the agent image has failed: tries again, or gives up and says so.
    void retryDownloading();

    // install: the Crash Detector
    void deleteOlderCrashDetector();
    void downloadCrashDetector();
    void crashDetectorLaunch();

    // diag: log and diagnostics
    /// One tick: the standard streams follow the log file, which is rotated when it has grown too large.
    void loggingFile();
    void startLoggingTimer();

    /// A step of the join has failed: sends the logs with a comment, and puts the network locations into the
    /// log.
    void sendJoinLogTask(const Text& comment);

    /// A milestone of the join has been reached: puts the network locations into the log.
    void joinFeatureTrackTask(std::string_view milestone);

    /// Starts the upload of the product's log folder. Gives the upload flag: "true" when an earlier upload of
    /// this run has been opened.
    std::string sendLogFiles(const Text& comment);

    /// Zips a folder into the archive in the temporary folder, whose path it gives, whatever came of it.
    std::string zipDirectoryWithPath(const std::string& folder);

    /// Begins the body with the attachment part of the log-mail form for a file; without content when the
    /// file cannot be read.
    void getFileDataWith(const std::string& path, platform::PostRequest& request);

    /// The information property list of a bundle, or the one embedded in an executable file; nothing when it
    /// has none.
    std::optional<platform::Value> embeddedPlistV2(const std::string& path);

private:
    void connectionDidReceiveResponse() override;
    void connectionDidReceiveData(std::string_view data) override;
    void connectionDidFinishLoading() override;
    void connectionDidFail(const platform::HttpError& error) override;
    void openUpload(platform::PostRequest request);

    void registerForLaunchUrls();
    void registerNotificationHandlers();
    void prepareFolders();
    void joinForTheFirstTime();
    void storeDeliveredParameterFile(const std::string& runningFolder, bool runsFromApplications);
    void installJoinCopies(const std::string& runningFolder, bool runsFromApplications);
};

} // namespace join
