#include "JoinApp.h"

#include "app/AppDelegate.h"
#include "platform/Exception.h"
#include "platform/NotificationCenter.h"
#include "platform/Services.h"
#include "platform/linux/bundles/LinuxBundles.h"
#include "platform/linux/bundles/LinuxWorkspace.h"
#include "platform/linux/desktop/SchemeRegistration.h"
#include "platform/linux/documents/NlohmannJson.h"
#include "platform/linux/documents/PlistPropertyLists.h"
#include "platform/linux/files/LinuxFileManager.h"
#include "platform/linux/files/LinuxPaths.h"
#include "platform/linux/http/HttpModule.h"
#include "platform/linux/instance/LaunchUrlEvents.h"
#include "platform/linux/instance/SingleInstance.h"
#include "platform/linux/process/LinuxTasks.h"
#include "platform/linux/system/CallStack.h"
#include "platform/linux/system/StderrLog.h"
#include "platform/linux/system/SystemClock.h"
#include "platform/linux/system/SystemVersionFile.h"
#include "platform/qt/QtApplication.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/QtStrings.h"
#include "platform/qt/QtTimers.h"
#include "platform/qt/QtToolkit.h"
#include "platform/qt/QtWindows.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace join::platform;

/// Every service, each made from those before it.
class Platform {
public:
    explicit Platform(JoinAppStart start) : start_(std::move(start)) {
        if (!paths_.prepare())
            log_.write("The folder " + paths_.userLibrary() + " cannot be made : " + std::strerror(errno));
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

    [[noreturn]] void run(ApplicationDelegate& delegate) {
        delegate_ = &delegate;
        application_.run(delegate);
    }

private:
    /// From here on the URLs of later starts follow on the one of this start.
    void deliverLaunchUrls() {
        if (start_.starts)
            start_.starts->messages().setNotification(
                [this] { mainQueue_.enqueue([this] { actOnLaterStart(); }); });
        if (start_.launchUrl)
            urlEvents_.deliver(*start_.launchUrl);
    }

    void actOnLaterStart() {
        const auto message = start_.starts->messages().next();
        if (!message)
            return;
        const bool isWindowShown = QtWindows::bringToFront(message->activationToken);
        if (message->url) {
            urlEvents_.deliver(*message->url);
        } else if (!isWindowShown && !delegate_->applicationShouldHandleReopen()) {
            log_.write("There is no window to show : a new Join takes over");
            unhandled_.push_back(*message);
            application_.terminate();
        }
    }

    /// Whoever handed over what this process has not come to was told that it is taken: a new process gets
    /// it, in the same order.
    void passOnLaterStarts() {
        if (!start_.starts)
            return;
        for (InstanceMessage& message : start_.starts->resign())
            unhandled_.push_back(std::move(message));
        bool isNextStarted = false;
        for (const InstanceMessage& message : unhandled_) {
            const bool isPassedOn = isNextStarted ? start_.starts->handOver(message) : startNext(message);
            isNextStarted = true;
            if (!isPassedOn)
                log_.write("A later start is lost : " + message.url.value_or("(no URL)"));
        }
    }

    bool startNext(const InstanceMessage& message) {
        Program next{.path = bundle_ / "Contents/MacOS/Join", .arguments = {}, .workingDirectory = "/"};
        if (message.url)
            next.arguments.push_back(*message.url);
        return tasks_.startDetached(next);
    }

    JoinAppStart start_;
    ApplicationDelegate* delegate_ = nullptr;
    std::vector<InstanceMessage> unhandled_; ///< of later starts
    std::filesystem::path bundle_ = runningBundle();
    SystemClock clock_;
    StderrLog log_{"Join", clock_};
    LinuxPaths paths_;
    SystemRoot root_{defaultSystemRoot(paths_.home())};
    LinuxFileManager fileManager_{root_, &log_};
    NlohmannJson json_;
    PlistPropertyLists propertyLists_;
    LinuxBundles bundles_{fileManager_, propertyLists_, root_};
    NotificationCenter notificationCenter_;
    QtMainQueue mainQueue_;
    HttpModule httpClient_{bundle_ / "Contents/PlugIns/JoinHttp.so", mainQueue_};
    QtTimers timers_;
    LinuxTasks tasks_{root_, bundle_ / "Contents/Helpers"};
    LinuxWorkspace workspace_{root_, bundles_, log_,
                              [this](const Program& program) { return tasks_.startDetached(program); }};
    SchemeRegistration registration_{root_, bundle_, log_, tasks_};
    LaunchUrlEvents urlEvents_{[this](const std::string& scheme, const std::string& bundleIdentifier) {
        mainQueue_.enqueue([=, this] { registration_.ensure(scheme, bundleIdentifier); });
    }};
    QtStrings strings_;
    QtWindows windows_{mainQueue_};
    QtApplication application_{
        paths_.bundlePath(bundle_, root_),
        {bundles_, fileManager_, propertyLists_},
        // The HTTP client is loaded now, while the bundle is still there: an update deletes it.
        {.afterFirstWindow = [this] { httpClient_.load(); },
         .deliverLaunchUrls = [this] { deliverLaunchUrls(); },
         .beforeEnd = [this] { passOnLaterStarts(); }}};
};

} // namespace

extern "C" __attribute__((visibility("default"))) int join_run_app(const JoinAppStart& start) {
    Exception::setCallStackSource(callStack);
    try {
        const QtToolkit toolkit(start.arguments);
        // Not before: what ends for want of a display shall have taken nothing, and with a second thread each
        // of the mappings that loading takes is slower.
        if (start.starts)
            start.starts->messages().begin();
        Platform platform(start);
        join::AppDelegate delegate;
        platform.run(delegate);
    } catch (const std::exception& exception) {
        std::cerr << "Join: cannot start: " << exception.what() << '\n';
        return EXIT_FAILURE;
    }
}
