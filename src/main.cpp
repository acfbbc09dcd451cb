#include "core/AppDelegate.h"
#include "platform/Exception.h"
#include "platform/NotificationCenter.h"
#include "platform/Services.h"
#include "platform/linux/CallStack.h"
#include "platform/linux/HttpModule.h"
#include "platform/linux/LaunchUrlEvents.h"
#include "platform/linux/LinuxBundles.h"
#include "platform/linux/LinuxFileManager.h"
#include "platform/linux/LinuxPaths.h"
#include "platform/linux/LinuxWorkspace.h"
#include "platform/linux/NlohmannJson.h"
#include "platform/linux/PlistPropertyLists.h"
#include "platform/linux/RunningBundle.h"
#include "platform/linux/StandardStreams.h"
#include "platform/linux/StderrLog.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/SystemVersionFile.h"
#include "platform/qt/QtApplication.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/QtStrings.h"
#include "platform/qt/QtTasks.h"
#include "platform/qt/QtTimers.h"
#include "platform/qt/QtWindows.h"

#include <QApplication>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>

namespace {

using namespace join::platform;

constexpr int usageError = 2;

/// Every service, each made from those before it.
class Platform {
public:
    explicit Platform(std::optional<std::string> launchUrl) : launchUrl_(std::move(launchUrl)) {
        paths_.prepare();
        fileManager_.createFolder(paths_.localApplications());
        makeSystemVersionFile(fileManager_);
        services() = {.application = &application_,
                      .bundles = &bundles_,
                      .clock = &clock_,
                      .fileManager = &fileManager_,
                      .httpClient = &httpClient_,
                      .json = &json_,
                      .log = &log_,
                      .mainQueue = &mainQueue_,
                      .notificationCenter = &notificationCenter_,
                      .paths = &paths_,
                      .propertyLists = &propertyLists_,
                      .strings = &strings_,
                      .tasks = &tasks_,
                      .timers = &timers_,
                      .urlEvents = &urlEvents_,
                      .windows = &windows_,
                      .workspace = &workspace_};
    }

    [[noreturn]] void run(ApplicationDelegate& delegate) { application_.run(delegate); }

private:
    void deliverLaunchUrl() {
        if (launchUrl_)
            urlEvents_.deliver(*launchUrl_);
    }

    std::optional<std::string> launchUrl_;
    std::filesystem::path bundle_ = bundleOf(runningExecutable());
    SystemClock clock_;
    StderrLog log_{"Join", clock_};
    LinuxPaths paths_;
    SystemRoot root_{defaultSystemRoot(paths_.home())};
    LinuxFileManager fileManager_{root_};
    NlohmannJson json_;
    PlistPropertyLists propertyLists_;
    LinuxBundles bundles_{fileManager_, propertyLists_, root_};
    NotificationCenter notificationCenter_;
    QtMainQueue mainQueue_;
    HttpModule httpClient_{bundle_ / "Contents/PlugIns/JoinHttp.so", mainQueue_};
    QtTimers timers_;
    QtTasks tasks_{root_, bundle_ / "Contents/Helpers"};
    LinuxWorkspace workspace_{root_, bundles_, log_,
                              [this](const Program& program) { return tasks_.startDetached(program); }};
    LaunchUrlEvents urlEvents_;
    QtStrings strings_;
    QtWindows windows_{mainQueue_};
    QtApplication application_{
        root_.toSystem(bundle_),
        {bundles_, fileManager_, propertyLists_},
        // The HTTP client is loaded now, while the bundle is still there: an update deletes it.
        {.afterFirstWindow = [this] { httpClient_.load(); },
         .deliverLaunchUrl = [this] { deliverLaunchUrl(); }}};
};

int refuse(const std::string& reason) {
    std::cerr << "Join: " << reason << '\n';
    return usageError;
}

} // namespace

int main(int argc, char* argv[]) {
    openMissingStandardStreams();
    std::signal(SIGPIPE, SIG_IGN);
    if (argc > 2 || (argc == 2 && !isLaunchUrl(argv[1])))
        return refuse("the only argument there is, is a launch URL, tavojoin://…");
    Exception::setCallStackSource(callStack);

    int toolkitArguments = 1; // the launch URL is none of the toolkit's business
    QApplication toolkit(toolkitArguments, argv);
    try {
        Platform platform(argc == 2 ? std::optional<std::string>(argv[1]) : std::nullopt);
        join::AppDelegate delegate;
        platform.run(delegate);
    } catch (const std::exception& exception) {
        std::cerr << "Join: cannot start: " << exception.what() << '\n';
        return EXIT_FAILURE;
    }
}
