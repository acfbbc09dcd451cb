#include "diag/DiagnosticTasks.h"
#include "diag/LogFile.h"
#include "install/InstalledPrograms.h"
#include "params/JoinParameters.h"
#include "params/SelfInstall.h"
#include "support/LogicTest.h"
#include "url/ModifyJoinDetails.h"

namespace join::test {

class StartUp : public LogicTest {};

const std::string finished = "-[AppDelegate applicationDidFinishLaunching:]";

TEST_F(StartUp, DoesItsStepsInOrder) {
    delegate.awakeFromNib();
    std::erase_if(journal, [](const std::string& entry) { // the window's own set-up
        return entry.starts_with("TavoJoinWindow:") || entry.starts_with("infoLabel:") ||
               entry.starts_with("progress:");
    });
    EXPECT_EQ(journal,
              (Journal{("log: +[MonitoringHandler addkey:value:] : Time stamp : "
                        R"({"M1":"Join Launched time : 01:05:09"})"),
                       "create folder /home/ann/Library/Logs//TavoFendel/",
                       "create folder /home/ann/Library/Logs//TavoFendel/Join/", "redirect", "timer 100 ms",
                       "default handler of tavojoin: com.tavo.join", "URL handler",
                       "log: -[AppDelegate awakeFromNib] : apple event manger initiated from awakefeomnib !!",
                       "create folder " + support,
                       "log: +[JoinSessionDetails setDefaultValues] : Setting default values ...",
                       "log: +[JoinSessionDetails getInstance] : Update Info Object Allocated",
                       "log: +[JoinSessionDetails setDefaultValues] : Default values are set",
                       "load TavoJoinWindow"}));
    EXPECT_TRUE(files.exists(logFolder + "join.log"));
    EXPECT_TRUE(progressWindow().isVisible());

    journal.clear();
    delegate.applicationWillFinishLaunching();
    EXPECT_EQ(journal,
              (Journal{"default handler of tavojoin: com.tavo.join", "URL handler",
                       "log: -[AppDelegate applicationWillFinishLaunching:] : apple event manger initiated "
                       "from will finish!!"}));
}

TEST_F(StartUp, WhatAPowerCutHasLeftEmptyIsMissing) {
    for (const std::string& path : {agent + "/Contents/MacOS/Tavo", homeJoin + "/Info", crashDetector})
        files.put(path, ""); // of the bundles nothing can be read
    delegate.awakeFromNib();
    for (const std::string& path : {agent, homeJoin, crashDetector}) {
        EXPECT_FALSE(files.exists(path));
        EXPECT_TRUE(happenedInOrder(
            journal, {"log: -[AppDelegate awakeFromNib] : " + path + " was damaged and has been removed",
                      "default handler of tavojoin: com.tavo.join"}));
    }
}

TEST_F(StartUp, ShowsOnlyTheErrorWindowBefore10_9) {
    const std::pair<platform::SystemVersion, bool> cases[] = {
        {{10, 8}, false}, {{0, 0}, false}, {{10, 9}, true}, {{10, 15}, true}, {{11, 0}, true}};
    for (const auto& [version, supported] : cases) {
        application.version = version;
        prepared();
        EXPECT_EQ(delegate.errorWindow == nullptr, supported) << version.major << '.' << version.minor;
        EXPECT_EQ(delegate.tavoJoinWindow != nullptr, supported);
        EXPECT_EQ(timers.running(), supported ? 1U : 0U);
        EXPECT_EQ(files.exists("/home"), supported);
        delegate.applicationDidFinishLaunching();
        EXPECT_EQ(journal.empty(), !supported);
    }
}

TEST_F(StartUp, ALaunchUrlOnAnUnsupportedSystemTouchesNeitherFilesNorStreams) {
    application.version = {10, 8};
    prepared();
    for (const char* url : {"tavojoin://k=123456789", "tavojoin://e=ann"})
        urlEvents.deliver(url);
    EXPECT_EQ(journal,
              Journal(2,
                      "log: -[AppDelegate handleGetURLEvent:withReplyEvent:] : Launch URL ignored: nothing "
                      "is prepared on a system that is not supported"));
    EXPECT_EQ(timers.running(), 0U);
}

TEST_F(StartUp, WithoutUrlAndWithoutAFirstRunItAsksForAKey) {
    prepared();
    files.put(parameters, header + "&firstTime=TRUE&");
    delegate.applicationDidFinishLaunching();
    EXPECT_TRUE(happenedInOrder(
        journal,
        {"log: " + finished + " : Join bundle Path : /Applications",
         "log: -[AppDelegate copyCurrentJoinAppFile] : Join App Path : /Applications",
         "log: -[AppDelegate readJoinParameters] : Read join parameters called.", "TavoJoinWindow: out",
         "log: -[TavoJoinWindowHandler closeWindow] : TavoJoinWindowHandler.closeWindow() called!",
         "log: " + finished + " : Join main window has been shown",
         "log: " + finished + " : Launch app called : 0 "}));
    EXPECT_EQ(agentDownloads(), 0);
    journal.clear();
    delegate.applicationDidFinishLaunching();
    EXPECT_EQ(std::ranges::count(journal, "TavoJoinWindow: out"), 0);
}

TEST_F(StartUp, WithALaunchUrlItInstallsItselfButReadsNoParameterFile) {
    prepared();
    files.put(parameters, header + "&firstTime=true&");
    urlEvents.deliver("tavojoin://k=123456789");
    delegate.applicationDidFinishLaunching();
    EXPECT_EQ(said("-[AppDelegate readJoinParameters]"), Journal{});
    EXPECT_EQ(said("-[AppDelegate copyCurrentJoinAppFile]").size(), 2U);
    EXPECT_EQ(said(finished), (Journal{"Join bundle Path : /Applications", "Launch app called : 1 "}));
}

class FirstRun : public StartUp, public ::testing::WithParamInterface<std::string> {};
INSTANTIATE_TEST_SUITE_P(Without, FirstRun, ::testing::Values("", "email=&", "email=(null)&"));

TEST_P(FirstRun, WritesBothFilesAndGoesOnToTheAgent) {
    const std::string body =
        "&key=123456789&" + GetParam() + "GatewayHost1=gw1&authToken=A&webServerName=host&firstTime=true&";
    application.bundle = "/Volumes/TavoJoin/Join.app";
    files.put("/Volumes/TavoJoin/.joinparameters", header + body);
    expectSessionCheck("0", "");
    prepared();
    delegate.applicationDidFinishLaunching();

    const std::string rewritten = header +
                                  "&key=123456789&gatewayName=(null)&defaultGatewayName=gw1&email=Guest"
                                  "&webServerName=host&tavoAppVersion=(null)&firstTime=false"
                                  "&joinAppVersion=(null)&";
    EXPECT_EQ(files.read(parameters), rewritten);
    EXPECT_EQ(files.read(joinDetails), header +
                                           "&authToken=A&gatewayName=(null)&defaultGatewayName=gw1"
                                           "&webServerName=host&isDemoMode=false&isDemoTech=false&group=null"
                                           "&email=Guest&key=123456789&");
    EXPECT_EQ(said(finished),
              (Journal{"Join bundle Path : /Volumes/TavoJoin", "Join.app installed first time.",
                       "Joinparameters String : " + rewritten,
                       "FirstTime parameter value has been changed to false.", "Launch app called : 0 "}));
    EXPECT_EQ(said("-[AppDelegate createTavoJoinDetails]"),
              (Journal{"JoinParameters : \n" + body, "tavojoindetails.conf created",
                       "tavojoindetails : \n" + header + body}));
    EXPECT_TRUE(
        happenedInOrder(journal, {"create " + joinDetails, "remove " + parameters, "create " + parameters,
                                  "log: -[AppDelegate tavoAppVersionCheck] : Tavo app not found, Setting app "
                                  "version to zero ( default)"}));
    EXPECT_EQ(agentDownloads(), 1);
    EXPECT_FALSE(delegate.firstTimeCheck());
}

TEST_F(StartUp, AParameterFileWithARefusedServerChangesNothingButTheWindow) {
    const std::string refused =
        header + "&key=123456789&webServerName=host&firstTime=true&webServerName=evil&";
    application.bundle = "/Volumes/TavoJoin/Join.app";
    files.put("/Volumes/TavoJoin/.joinparameters", refused);
    files.put(parameters, header + "stored earlier");
    prepared();
    delegate.applicationDidFinishLaunching();
    EXPECT_EQ(files.read(parameters), header + "stored earlier");
    EXPECT_EQ(std::ranges::count(logSink.lines,
                                 "-[AppDelegate copyCurrentJoinAppFile] : Join parameters file "
                                 "refused : evil is refused"),
              1);
    EXPECT_TRUE(happenedInOrder(journal, {"infoLabel: [LINK_NOT_ALLOWED]"}));
    EXPECT_FALSE(windows.loaded.contains("TavoJoinMainWindow"));
    files.put(parameters, refused);
    EXPECT_FALSE(delegate.firstTimeCheck());
    EXPECT_EQ(session().webServerName(), "join.example.com");
    EXPECT_EQ(said("-[AppDelegate readJoinParameters]").back(),
              "Join parameters file refused : evil is refused");
}

TEST_F(StartUp, EveryOperationReportsAnExceptionUnderItsOwnNameAndReturns) {
    const auto finishDownload = [&] {
        mainQueue.turn();
        http.downloads.back().second->downloadDidFinish();
    };
    const auto downloadAgent = [&] {
        delegate.tavoDmgDownloader->startDownLoadingTavoMacDmg();
        finishDownload();
    };
    const auto downloadJoin = [&] {
        delegate.joinDmgDownloader->startDownLoadingJoinMacDmg();
        finishDownload();
    };
    const auto sendLogs = [&] {
        files.createFolder(logFolder);
        sendJoinLogTask(*delegate.logUpload, {});
        mainQueue.turn();
    };
    const struct {
        std::string method;
        std::function<void()> operation;
        std::string failingLine = method + " : "; ///< the first that holds this cannot be logged, ...
        bool* failure = nullptr;                  ///< ... or a double that fails once
        std::string report = "Exception in " + method + " : ";
    } cases[] = {
        {"-[AppDelegate awakeFromNib]", [&] { delegate.awakeFromNib(); }},
        {"-[AppDelegate applicationWillFinishLaunching:]",
         [&] { delegate.applicationWillFinishLaunching(); }},
        {finished, [&] { delegate.applicationDidFinishLaunching(); }},
        {finished, rewriteJoinParameters},
        {"-[AppDelegate applicationShouldHandleReopen:hasVisibleWindows:]",
         [&] {
             delegate.joinDmgDownloader->startDownLoadingJoinMacDmg();
             delegate.tavoJoinWindow = std::make_unique<TavoJoinWindowHandler>();
             EXPECT_TRUE(delegate.applicationShouldHandleReopen());
         },
         "no line", &windows.failsOnce},
        {"-[AppDelegate handleGetURLEvent:withReplyEvent:]", [&] { urlEvents.deliver("tavojoin://k=1"); }},
        {"-[AppDelegate joinAppVersionCheck]", [&] { delegate.joinAppVersionCheck(); }},
        {"-[AppDelegate isCrashDetectorUpdateNeeded]", [&] { delegate.isCrashDetectorUpdateNeeded(); }},
        {"-[AppDelegate embeddedPlistV2:]", [&] { delegate.isCrashDetectorUpdateNeeded(); }, "no line",
         &bundles.failsOnce},
        {"-[AppDelegate deleteOlderCrashDetector]", deleteOlderCrashDetector},
        {"-[AppDelegate downloadCrashDetector]",
         [&] {
             files.remove(crashDetector);
             delegate.downloadCrashDetector();
         }},
        {"-[AppDelegate tavoAppVersionCheck]", [&] { delegate.tavoAppVersionCheck(); }},
        {"-[AppDelegate retryDownloading]", [&] { delegate.retryDownloading(); }},
        {"-[AppDelegate appLaunch]", [&] { delegate.appLaunch(); }},
        {"-[AppDelegate readJoinParameters]", readJoinParameters},
        {"-[AppDelegate createTavoJoinDetails]", createTavoJoinDetails},
        {"-[AppDelegate copyCurrentJoinAppFile]", copyCurrentJoinAppFile},
        {"-[AppDelegate modifyJoinDetails]", modifyJoinDetails},
        {"-[AppDelegate joinFeatureTrackTask:]", joinFeatureTrackTask},
        {"-[AppDelegate loggingFile:]", loggingFile, "redirect"},
        {"-[AppDelegate startLoggingTimer]", startLoggingTimer, "no line", &timers.failsOnce},
        {"-[AppDelegate sendJoinLogTask:]", sendLogs},
        {"-[AppDelegate sendLogFiles:]", sendLogs, "Logger URL", nullptr, banner("the log is full")},
        {"-[AppDelegate sendLogFiles:]_block_invoke", sendLogs},
        {"LogHandler.getFileDataWith()", sendLogs, "Nothing is attached", nullptr,
         "-[AppDelegate getFileDataWith:] : Exception occured in LogHandler.getFileDataWith() : the log is full "},
        {"-[DiskImageDownloader start]",
         [&] {
             delegate.tavoDmgDownloader->startDownLoadingTavoMacDmg();
             mainQueue.turn();
         },
         "Tavo Dmg Url"},
        {"-[TavoDMGDownloader mountingTavoMacDmg]", downloadAgent},
        {"TavoDMGDownloader.unmountingTavoMacDmg()",
         [&] {
             for (const std::string& program : {agent, crashDetector})
                 files.remove(program);
             files.putFolder("/Volumes/Tavo");
             downloadAgent();
         },
         "Dmg unmount task", nullptr,
         "-[TavoDMGDownloader unMountingTavoMacDmg] : Exception in TavoDMGDownloader.unmountingTavoMacDmg() : the log"},
        {"-[JoinDMGDownloader mountingJoinMacDmg]", downloadJoin},
        {"-[JoinDMGDownloader unMountingTavoJoinDmg]", downloadJoin},
    };
    for (const auto& [method, operation, failingLine, failure, report] : cases) {
        preparedToJoin();
        installCrashDetector("1");
        installAgent("1");
        logSink.throwsOnceOn = failingLine;
        if (failure)
            *failure = true;
        operation();
        mainQueue.turn();
        logSink.throwsOnceOn.clear();
        EXPECT_EQ(std::ranges::count_if(
                      logSink.lines,
                      [&](const std::string& line) { return line.find(report) != std::string::npos; }),
                  1)
            << method;
    }
}

TEST_F(StartUp, NotificationsReachTheirHandlersOnce) {
    prepared();
    workspace.running = {"com.tavo.fendel.Tavo"};
    const std::pair<const char*, std::string> cases[] = {
        {"ModifyJoinDetails", "-[AppDelegate modifyJoinDetails] : Modify joindetails called!"},
        {"ReadJoinParameters", "-[AppDelegate readJoinParameters] : Read join parameters called."},
        {"RetryDMGDownloadig", "-[AppDelegate retryDownloading] : Retrying dmg download! COUNT : 1 "},
        {"LaunchTavoApp", "-[AppDelegate appLaunch] : App Path : /Applications"},
        {"LaunchCrashDetector", "-[AppDelegate crashDetectorLaunch] : Crash detector is not availble"},
    };
    for (const auto& [name, line] : cases) {
        notifications.post(name, "an object");
        EXPECT_EQ(std::ranges::count(logSink.lines, line), 1) << name;
    }
    EXPECT_THROW(notifications.post("Terminate"), Terminated);
}

} // namespace join::test
