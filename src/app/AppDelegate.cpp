#include "app/AppDelegate.h"

#include "base/Locations.h"
#include "base/Logging.h"
#include "diag/LogFile.h"
#include "diag/MonitoringHandler.h"
#include "install/InstalledPrograms.h"
#include "params/JoinParameters.h"
#include "params/SelfInstall.h"
#include "platform/FileManager.h"
#include "platform/Services.h"
#include "platform/UrlEvents.h"
#include "session/ProcessSlots.h"

namespace join {

using platform::services;

namespace {

void prepareFolders() {
    slots().tavoJoinLogFolder = joinLogFolder();
    slots().tavoDirectoryManager = services().fileManager;
    files().createFolder(productLogFolder());
    files().createFolder(slots().tavoJoinLogFolder);
}

} // namespace

bool AppDelegate::checkCompatibility() {
    const platform::SystemVersion version = services().application->systemVersion();
    return version.major > 10 || version.minor > 8;
}

void AppDelegate::awakeFromNib() {
    reportingExceptions("-[AppDelegate awakeFromNib]", [&](std::string_view method) {
        MonitoringHandler::addkey("M1",
                                  formatted("Join Launched time : %@", MonitoringHandler::currentTime()));
        if (!checkCompatibility()) {
            errorWindow = std::make_unique<ErrorWindow>();
            errorWindow->showWindow();
            return;
        }
        prepareFolders();
        loggingFile();
        startLoggingTimer();
        removeDamagedPrograms();
        registerForLaunchUrls();
        log("%s : apple event manger initiated from awakefeomnib !!", method);
        slots().tavoMeetingNativeFolder = supportFolder();
        files().createFolder(slots().tavoMeetingNativeFolder);
        JoinSessionDetails::setDefaultValues();
        tavoJoinWindow = std::make_unique<TavoJoinWindowHandler>();
        tavoJoinWindow->showWindow();
        joinMainWindow = std::make_unique<TavoJoinMainWindowHandler>(*tavoJoinWindow);
        tavoDmgDownloader = std::make_unique<TavoDMGDownloader>(*tavoJoinWindow);
        joinDmgDownloader = std::make_unique<JoinDMGDownloader>(*tavoJoinWindow);
        logUpload = std::make_unique<LogUpload>();
        registerNotificationHandlers();
    });
}

void AppDelegate::registerForLaunchUrls() {
    services().urlEvents->setDefaultHandler("tavojoin", services().application->bundleIdentifier());
    services().urlEvents->setEventHandler([this](const std::string& url) { handleGetURLEvent(url); });
}

void AppDelegate::applicationWillFinishLaunching() {
    reportingExceptions("-[AppDelegate applicationWillFinishLaunching:]", [&](std::string_view method) {
        registerForLaunchUrls();
        log("%s : apple event manger initiated from will finish!!", method);
    });
}

void AppDelegate::applicationDidFinishLaunching() {
    reportingExceptions("-[AppDelegate applicationDidFinishLaunching:]", [&](std::string_view method) {
        if (!checkCompatibility())
            return;
        log("%s : Join bundle Path : %@", method, runningFolder());
        const bool isDeliveredFileAllowed = copyCurrentJoinAppFile();
        if (!slots().launchApp) {
            if (!isDeliveredFileAllowed) {
                tavoJoinWindow->showProblem("LINK_NOT_ALLOWED");
            } else if (firstTimeCheck()) {
                joinForTheFirstTime();
            } else {
                tavoJoinWindow->closeWindow();
                joinMainWindow->showWindow();
                log("%s : Join main window has been shown", method);
            }
        }
        log("%s : Launch app called : %hhd ", method, slots().launchApp);
    });
}

bool AppDelegate::applicationShouldHandleReopen() {
    const bool works = (tavoDmgDownloader && tavoDmgDownloader->isBusy()) ||
                       (joinDmgDownloader && joinDmgDownloader->isBusy());
    if (works)
        reportingExceptions("-[AppDelegate applicationShouldHandleReopen:hasVisibleWindows:]",
                            [this] { tavoJoinWindow->showWindow(); });
    return works;
}

bool AppDelegate::firstTimeCheck() {
    readJoinParameters();
    return session().firstTime() == "true";
}

void AppDelegate::terminate() const { tavoJoinWindow->close(); }

void AppDelegate::applicationWillTerminate() {}

} // namespace join
