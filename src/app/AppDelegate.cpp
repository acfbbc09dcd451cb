#include "app/AppDelegate.h"

#include "base/Locations.h"
#include "base/Logging.h"
#include "diag/MonitoringHandler.h"
#include "install/JoinDMGDownloader.h"
#include "install/TavoDMGDownloader.h"
#include "platform/FileManager.h"
#include "platform/NotificationCenter.h"
#include "platform/Services.h"
#include "platform/Timers.h"
#include "platform/UrlEvents.h"
#include "session/JoinSessionDetails.h"
#include "session/ProcessSlots.h"
#include "ui/ErrorWindow.h"
#include "ui/TavoJoinMainWindowHandler.h"
#include "ui/TavoJoinWindowHandler.h"

namespace join {

using platform::services;

bool AppDelegate::checkCompatibility() {
    const platform::SystemVersion version = services().application->systemVersion();
    return version.major > 10 || version.minor > 8;
}

void AppDelegate::awakeFromNib() {
    constexpr auto method = "-[AppDelegate awakeFromNib]";
    reportingExceptions(method, [&] {
        MonitoringHandler::addkey("M1",
                                  formatted("Join Launched time : %@", MonitoringHandler::currentTime()));
        if (!checkCompatibility()) {
            slots().errorWindow = std::make_unique<ErrorWindow>();
            slots().errorWindow->showWindow();
            return;
        }
        prepareFolders();
        loggingFile();
        startLoggingTimer();
        registerForLaunchUrls();
        log("%s : apple event manger initiated from awakefeomnib !!", method);
        slots().tavoMeetingNativeFolder = supportFolder();
        slots().tavoDirectoryManager->createFolder(slots().tavoMeetingNativeFolder);
        JoinSessionDetails::setDefaultValues();
        slots().tavoJoinWindow = std::make_unique<TavoJoinWindowHandler>();
        slots().tavoJoinWindow->showWindow();
        slots().joinMainWindow = std::make_unique<TavoJoinMainWindowHandler>(*slots().tavoJoinWindow);
        slots().tavoDmgDownloader = std::make_unique<TavoDMGDownloader>();
        slots().joinDmgDownloader = std::make_unique<JoinDMGDownloader>();
        registerNotificationHandlers();
    });
}

void AppDelegate::prepareFolders() {
    slots().tavoJoinLogFolder = joinLogFolder();
    slots().tavoDirectoryManager = services().fileManager;
    slots().tavoDirectoryManager->createFolder(productLogFolder());
    slots().tavoDirectoryManager->createFolder(slots().tavoJoinLogFolder);
}

void AppDelegate::registerForLaunchUrls() {
    services().urlEvents->setDefaultHandler("tavojoin", services().application->bundleIdentifier());
    services().urlEvents->setEventHandler([this](const std::string& url) { handleGetURLEvent(url); });
}

void AppDelegate::registerNotificationHandlers() {
    platform::NotificationCenter& center = *services().notificationCenter;
    const auto observe = [&](const char* name, void (AppDelegate::*handler)()) {
        center.addObserver(name, [this, handler](const Text&) { (this->*handler)(); });
    };
    observe("ModifyJoinDetails", &AppDelegate::modifyJoinDetails);
    center.addObserver("Terminate", [this](const Text&) { terminate(); });
    observe("ReadJoinParameters", &AppDelegate::readJoinParameters);
    observe("RetryDMGDownloadig", &AppDelegate::retryDownloading);
    observe("LaunchTavoApp", &AppDelegate::appLaunch);
    center.addObserver("SendJoinLog", [this](const Text& comment) { sendJoinLogTask(comment); });
    observe("LaunchCrashDetector", &AppDelegate::crashDetectorLaunch);
}

void AppDelegate::applicationWillFinishLaunching() {
    constexpr auto method = "-[AppDelegate applicationWillFinishLaunching:]";
    reportingExceptions(method, [&] {
        registerForLaunchUrls();
        log("%s : apple event manger initiated from will finish!!", method);
    });
}

void AppDelegate::applicationDidFinishLaunching() {
    constexpr auto method = "-[AppDelegate applicationDidFinishLaunching:]";
    reportingExceptions(method, [&] {
        if (!checkCompatibility())
            return;
        log("%s : Join bundle Path : %@", method, runningFolder());
        copyCurrentJoinAppFile();
        if (!slots().launchApp) {
            if (firstTimeCheck()) {
                joinForTheFirstTime();
            } else {
                if (slots().tavoJoinWindow->isVisible())
                    slots().tavoJoinWindow->closeWindow();
                slots().joinMainWindow->showWindow();
                log("%s : Join main window has been shown", method);
            }
        }
        log("%s : Launch app called : %hhd ", method, slots().launchApp);
    });
}

void AppDelegate::joinForTheFirstTime() {
    log("%s : Join.app installed first time.", "-[AppDelegate applicationDidFinishLaunching:]");
    createTavoJoinDetails();
    if (const Text emailID = session().emailID(); !isFilled(emailID) || *emailID == absentText)
        session().setEmailID("Guest");
    rewriteJoinParameters();
    if (session().sessionType() == SessionType::remoteSupport)
        session().setJoinType(JoinType::firstRemoteSupport);
    else if (session().sessionType() == SessionType::meeting)
        session().setJoinType(JoinType::firstMeeting);
    versionCheckChain();
}

bool AppDelegate::applicationShouldHandleReopen() {
    const bool works = (slots().tavoDmgDownloader && slots().tavoDmgDownloader->isBusy()) ||
                       (slots().joinDmgDownloader && slots().joinDmgDownloader->isBusy());
    if (works)
        reportingExceptions("-[AppDelegate applicationShouldHandleReopen:hasVisibleWindows:]",
                            [] { slots().tavoJoinWindow->showWindow(); });
    return works;
}

bool AppDelegate::firstTimeCheck() {
    readJoinParameters();
    return session().firstTime() == "true";
}

void AppDelegate::terminate() { slots().tavoJoinWindow->close(); }

void AppDelegate::applicationWillTerminate() {}

} // namespace join
