#include "JoinApp.h"

#include "app/AppDelegate.h"
#include "platform/Exception.h"
#include "platform/NotificationCenter.h"
#include "platform/Services.h"
#include "platform/linux/bundles/LinuxBundles.h"
#include "platform/linux/bundles/LinuxWorkspace.h"
#include "platform/linux/desktop/Policy.h"
#include "platform/linux/desktop/SchemeRegistration.h"
#include "platform/linux/documents/NlohmannJson.h"
#include "platform/linux/documents/PlistPropertyLists.h"
#include "platform/linux/files/LinuxFileManager.h"
#include "platform/linux/files/LinuxPaths.h"
#include "platform/linux/http/HttpModule.h"
#include "platform/linux/instance/LaterStarts.h"
#include "platform/linux/process/LinuxTasks.h"
#include "platform/linux/system/StderrLog.h"
#include "platform/linux/system/SystemClock.h"
#include "platform/linux/system/SystemVersionFile.h"
#include "platform/qt/QtApplication.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/QtStrings.h"
#include "platform/qt/QtTimers.h"
#include "platform/qt/QtToolkit.h"
#include "platform/qt/QtWaiting.h"
#include "platform/qt/QtWindows.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <iostream>
#include <memory>
#include <utility>

namespace {

using namespace join::platform;

// The services whose work may take long. While the logic waits for it, the windows live.

class LivelyClock final : public SystemClock {
public:
    explicit LivelyClock(QtWaiting& waiting) : waiting_(waiting) {}

    void sleep(std::chrono::milliseconds duration) override {
        waiting_.during([&] { SystemClock::sleep(duration); });
    }

private:
    QtWaiting& waiting_;
};

class LivelyFileManager final : public LinuxFileManager {
public:
    LivelyFileManager(const SystemRoot& root, Log& log, QtWaiting& waiting)
        : LinuxFileManager(root, &log), waiting_(waiting) {}

    bool copy(const std::string& source, const std::string& target) override {
        return waiting_.during([&] { return LinuxFileManager::copy(source, target); });
    }
    bool install(const std::string& source, const std::string& target) override {
        return waiting_.during([&] { return LinuxFileManager::install(source, target); });
    }
    bool replace(const std::string& source, const std::string& target) override {
        return waiting_.during([&] { return LinuxFileManager::replace(source, target); });
    }
    bool remove(const std::string& path) override {
        return waiting_.during([&] { return LinuxFileManager::remove(path); });
    }
    bool create(const std::string& path, std::string_view contents) override {
        return waiting_.during([&] { return LinuxFileManager::create(path, contents); });
    }

private:
    QtWaiting& waiting_;
};

class LivelyHttpClient final : public HttpModule {
public:
    LivelyHttpClient(const std::string& path, MainQueue& mainQueue, const TrustPolicy& policy,
                     QtWaiting& waiting)
        : HttpModule(path, mainQueue, policy), waiting_(waiting) {}

    HttpReply get(const HttpRequest& request) override {
        return waiting_.during([&] { return HttpModule::get(request); });
    }

private:
    QtWaiting& waiting_;
};

class LivelyTasks final : public LinuxTasks {
public:
    LivelyTasks(const SystemRoot& root, const std::filesystem::path& helpersFolder, QtWaiting& waiting)
        : LinuxTasks(root, helpersFolder), waiting_(waiting) {}

    TaskResult run(const Program& program) override {
        return waiting_.during([&] { return LinuxTasks::run(program); });
    }
    void start(const Program& program) override {
        waiting_.during([&] { LinuxTasks::start(program); });
    }

private:
    QtWaiting& waiting_;
};

/// Begins something when the first window has been made, side by side with its layout and painting. Not
/// earlier: while a thread loads libraries, no other thread can be started, and the window needs some.
class BeginningWindows final : public QtWindows {
public:
    BeginningWindows(QtMainQueue& mainQueue, std::function<void()> begin)
        : QtWindows(mainQueue), begin_(std::move(begin)) {}

    std::unique_ptr<Window> load(const std::string& name) override {
        auto window = QtWindows::load(name);
        if (const auto begin = std::exchange(begin_, nullptr))
            begin();
        return window;
    }

private:
    std::function<void()> begin_;
};

/// Every service; each is created from those before it.
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
                      .trustPolicy = &policy_,
                      .urlEvents = &urlEvents_,
                      .windows = &windows_,
                      .workspace = &workspace_};
    }

    [[noreturn]] void run(ApplicationDelegate& delegate) {
        delegate_ = &delegate;
        application_.run(delegate);
    }

private:
    JoinAppStart start_;
    ApplicationDelegate* delegate_ = nullptr;
    std::filesystem::path bundle_ = runningBundle();
    QtMainQueue mainQueue_;
    QtWaiting waiting_{mainQueue_};
    LivelyClock clock_{waiting_};
    StderrLog log_{"Join", clock_};
    LinuxPaths paths_;
    SystemRoot root_{defaultSystemRoot(paths_.home())};
    LivelyFileManager fileManager_{root_, log_, waiting_};
    NlohmannJson json_;
    PlistPropertyLists propertyLists_;
    LinuxBundles bundles_{fileManager_, propertyLists_, root_};
    NotificationCenter notificationCenter_;
    Policy policy_{Policy::ofComputer()};
    LivelyHttpClient httpClient_{bundle_ / "Contents/PlugIns/JoinHttp.so", mainQueue_, policy_, waiting_};
    QtTimers timers_{mainQueue_};
    LivelyTasks tasks_{root_, bundle_ / "Contents/Helpers", waiting_};
    LinuxWorkspace workspace_{root_, bundles_, log_, [this](const Program& program) {
                                  return waiting_.during([&] { return tasks_.startDetached(program); });
                              }};
    SchemeRegistration registration_{root_, bundle_, log_, tasks_};
    QtStrings strings_;
    // A start with a URL will ask the web server; one without may wait for a key for hours, and needs less memory.
    BeginningWindows windows_{mainQueue_, [this] {
                                  if (start_.launchUrl)
                                      httpClient_.begin();
                              }};
    LaterStarts urlEvents_{
        start_.starts,
        mainQueue_,
        log_,
        {.registerScheme = [this](const auto&... names) { registration_.ensure(names...); },
         .bringToFront = QtWindows::bringToFront,
         .reopen = [this] { return delegate_->applicationShouldHandleReopen(); },
         .terminate = [this] { application_.terminate(); },
         .startNext =
             [this](const auto& arguments) {
                 return tasks_.startDetached({.path = bundle_ / "Contents/MacOS/Join",
                                              .arguments = arguments,
                                              .workingDirectory = "/"});
             }}};
    QtApplication application_{paths_.bundlePath(bundle_, root_),
                               {.deliverLaunchUrls = [this] { urlEvents_.begin(start_.launchUrl); },
                                .beforeEnd = [this] { urlEvents_.passOn(); }}};
};

} // namespace

extern "C" __attribute__((visibility("default"))) int join_run_app(const JoinAppStart& start) {
    Exception::setCallStackSource(callStack);
    try {
        const QtToolkit toolkit(start.arguments);
        // Not earlier: a process that ends because it has no display must not have taken any message, and
        // with a second thread every memory mapping made by loading is slower.
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
