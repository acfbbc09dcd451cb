// The course of a join, from what starts it to the running agent, in the order in which it happens.

#include "app/AppDelegate.h"
#include "base/Locations.h"
#include "base/Logging.h"
#include "diag/DiagnosticTasks.h"
#include "diag/LogFile.h"
#include "diag/MonitoringHandler.h"
#include "install/InstalledPrograms.h"
#include "params/JoinParameters.h"
#include "params/SelfInstall.h"
#include "platform/Clock.h"
#include "platform/FileManager.h"
#include "platform/NotificationCenter.h"
#include "platform/Services.h"
#include "server/ApiHandler.h"
#include "server/DownloadRetry.h"
#include "server/VersionDecisions.h"
#include "session/ProcessSlots.h"
#include "url/LaunchUrlHandler.h"
#include "url/ModifyJoinDetails.h"

namespace join {

using platform::services;

// 1. The join starts with a launch URL, ...
void AppDelegate::handleGetURLEvent(const std::string& url) {
    reportingExceptions("-[AppDelegate handleGetURLEvent:withReplyEvent:]", [&](std::string_view method) {
        slots().launchApp = true;
        if (!tavoJoinWindow) {
            log("%s : Launch URL ignored: nothing is prepared on a system that is not supported", method);
            return;
        }
        loggingFile();
        startLoggingTimer();
        const LaunchUrlOutcome outcome = applyLaunchUrl(url);
        if (outcome == LaunchUrlOutcome::refused) {
            tavoJoinWindow->showProblem("LINK_NOT_ALLOWED");
            tavoJoinWindow->showWindow();
            return;
        }
        if (outcome == LaunchUrlOutcome::withoutKey) {
            log("%s : Key not received in launchapp!", method);
            tavoJoinWindow->closeWindow();
            joinMainWindow->showWindowAskingForValidKey();
            return;
        }
        if (joinMainWindow->isVisible())
            joinMainWindow->close();
        tavoJoinWindow->showProgress();
        tavoJoinWindow->showWindow();
        log("%s : Modify join details by Launch App", method);
        modifyJoinDetails();
        joinAppVersionCheck();
        log("%s : Join app version check method called!!", method);
    });
}

// ... the parameter file of a freshly downloaded Join app, ...
void AppDelegate::joinForTheFirstTime() {
    log("%s : Join.app installed first time.", "-[AppDelegate applicationDidFinishLaunching:]");
    createTavoJoinDetails();
    session().nameGuest();
    rewriteJoinParameters();
    session().setJoinTypeOf(JoinRun::first);
    versionCheckChain();
}

// ... or a typed key, which the key window checks with the web server. The key window then posts
// "ModifyJoinDetails" and "LaunchTavoApp"; the other notifications come from steps in progress.
void AppDelegate::registerNotificationHandlers() {
    platform::NotificationCenter& center = *services().notificationCenter;
    center.addObserver("ModifyJoinDetails", [](const Text&) { modifyJoinDetails(); });
    center.addObserver("Terminate", [this](const Text&) { terminate(); });
    center.addObserver("ReadJoinParameters", [](const Text&) { readJoinParameters(); });
    center.addObserver("RetryDMGDownloadig", [this](const Text&) { retryDownloading(); });
    center.addObserver("LaunchTavoApp", [this](const Text&) { appLaunch(); });
    center.addObserver("SendJoinLog", [this](const Text& comment) { sendJoinLogTask(*logUpload, comment); });
    center.addObserver("LaunchCrashDetector", [this](const Text&) { crashDetectorLaunch(); });
}

// 2. After a launch URL: check the Join app itself. The download of its image ends with "LaunchTavoApp".
void AppDelegate::joinAppVersionCheck() {
    reportingExceptions("-[AppDelegate joinAppVersionCheck]", [&](std::string_view method) {
        JoinSessionDetails& details = session();
        const Text localVersion = installedVersion(systemJoinCopy());
        const JoinAppStep step = joinAppStep(localVersion, details.joinAppVersion(), slots().launchApp);
        if (step == JoinAppStep::download) {
            log("%s : Join.app file not found in Applications folder - starting JoinMac.dmg download",
                method);
            joinDmgDownloader->startDownLoadingJoinMacDmg();
            return;
        }
        if (!details.joinAppVersion())
            details.joinAppVersion.set(localVersion);
        log("%s : Local Join App version : %@ Latest Join App version : %@", method, localVersion,
            details.joinAppVersion());
        if (step == JoinAppStep::goOn) {
            versionCheckChain();
            log("%s : This mac has latest join app", method);
        } else if (step == JoinAppStep::downloadInstead) {
            removeJoinCopies();
            joinDmgDownloader->startDownLoadingJoinMacDmg();
            log("%s : Downloading latest Join.app", method);
        }
    });
}

// 3. After a launch URL or on a first run: check the Crash Detector and the agent.
void AppDelegate::versionCheckChain() {
    if (isCrashDetectorUpdateNeeded())
        deleteOlderCrashDetector();
    downloadCrashDetector();
    tavoAppVersionCheck();
}

bool AppDelegate::isCrashDetectorUpdateNeeded() {
    bool isNeeded = false;
    reportingExceptions("-[AppDelegate isCrashDetectorUpdateNeeded]", [&](std::string_view method) {
        if (!files().exists(installedCrashDetector()))
            return;
        JoinSessionDetails& details = session();
        const Text localVersion = crashDetectorVersion();
        log("%s : Local Crash Detector App version : %@ Latest Crash Detector App version : %@", method,
            localVersion, details.crashDetectorAppVersion());
        isNeeded = isCrashDetectorOutdated(localVersion, details.crashDetectorAppVersion());
        if (!details.crashDetectorAppVersion())
            details.crashDetectorAppVersion.set(localVersion);
    });
    return isNeeded;
}

void AppDelegate::downloadCrashDetector() const {
    reportingExceptions("-[AppDelegate downloadCrashDetector]", [&](std::string_view method) {
        if (files().exists(installedCrashDetector()) || !files().exists(installedAgent()))
            return;
        log("%s : CrashDetector is not available. Download crash detector Mount from tavoDmg file", method);
        tavoDmgDownloader->startDownLoadingTavoMacDmg();
    });
}

void AppDelegate::tavoAppVersionCheck() {
    reportingExceptions("-[AppDelegate tavoAppVersionCheck]", [&](std::string_view method) {
        JoinSessionDetails& details = session();
        details.setJoinTypeOf(JoinRun::later);

        const Text localVersion = installedVersion(installedAgent());
        details.localTavoAppVersion.set(localVersion.value_or("0"));
        if (localVersion) {
            if (!details.tavoAppVersion())
                details.tavoAppVersion.set(localVersion);
            log("%s : Local Tavo App version : %@ Latest Tavo App version : %@", method, localVersion,
                details.tavoAppVersion());
        } else {
            log("%s : Tavo app not found, Setting app version to zero ( default)", method);
        }
        modifyJoinDetails();
        if (ApiHandler* api = ApiHandler::getInstance())
            api->checkSessionApi();
        MonitoringHandler::addkey("M2",
                                  formatted("Session Validated : %@", MonitoringHandler::currentTime()));

        if (!details.isUpdateNeeded()) {
            log("%s : This mac has latest Tavo App", method);
            appLaunch();
            return;
        }
        removeOutdatedAgent();
        joinFeatureTrackTask();
        tavoDmgDownloader->startDownLoadingTavoMacDmg();
    });
}

// 4. The download of the agent image installs both programs, starts the agent and posts "Terminate". If it
// fails, it posts "RetryDMGDownloadig".
void AppDelegate::retryDownloading() const {
    reportingExceptions("-[AppDelegate retryDownloading]", [&](std::string_view method) {
        JoinSessionDetails& details = session();
        details.retryCounter.set(details.retryCounter() + 1);
        const DownloadRetry retry = downloadRetryAfter(details.retryCounter());
        if (retry.givesUp) {
            tavoJoinWindow->showProblem();
            services().notificationCenter->post("SendJoinLog", "Join App faild to download TavoMac.dmg");
            return;
        }
        if (retry.usesWebServer) {
            details.isAwsAvailable.set(false);
            details.isCdnAvailable.set(false);
        }
        log("%s : Retrying dmg download! COUNT : %d ", method, details.retryCounter());
        services().clock->sleep(pauseBetweenAttempts);
        tavoDmgDownloader->startDownLoadingTavoMacDmg();
    });
}

// 5. Start an installed agent, ...
void AppDelegate::appLaunch() {
    reportingExceptions("-[AppDelegate appLaunch]", [&](std::string_view method) {
        log("%s : App Path : %@", method, runningFolder());
        files().createFolder(slots().tavoMeetingNativeFolder);
        if (files().exists(installedAgent())) {
            workspaceLaunchApplication(installedAgent());
            log("%s : Tavo app file has been launched", method);
            joinFeatureTrackTask();
            tavoJoinWindow->closeWindow();
            crashDetectorLaunch();
        } else {
            log("tavo dmg not yet installed");
            tavoDmgDownloader->startDownLoadingTavoMacDmg();
            joinFeatureTrackTask();
        }
    });
}

// ... then the Crash Detector. That completes the join.
void AppDelegate::crashDetectorLaunch() const {
    constexpr auto method = "-[AppDelegate crashDetectorLaunch]";
    try {
        if (!isTavoAppRunning())
            return;
        JoinSessionDetails& details = session();
        tavoJoinWindow->orderOut();
        if (details.isCrashDetectorLaunched()) {
            log("%s : Crash Detector already launched for this session.", method);
        } else if (files().exists(installedCrashDetector())) {
            startCrashDetector();
            log("%s : Crash detector has been launched!", method);
            details.isCrashDetectorLaunched.set(true);
        } else {
            log("%s : Crash detector is not availble", method);
            if (files().exists(crashDetectorImage())) {
                log("%s : Crash detector dmg is availble", method);
                tavoDmgDownloader->mountingTavoMacDmg();
            } else if (!details.isCrashDetectorDownloadStarted()) {
                downloadCrashDetector();
            }
        }
        if (details.isCrashDetectorLaunched())
            terminate();
    } catch (const std::exception& exception) {
        log("Exception in %s : %@", method, exception.what());
        terminate();
    }
}

} // namespace join
