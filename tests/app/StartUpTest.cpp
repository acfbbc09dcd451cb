#include "support/LogicTest.h"

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
    EXPECT_EQ(countBeginningWith(journal, "log: "), std::ssize(journal));
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

TEST_F(StartUp, AFirstRunWritesBothFilesAndGoesOnToTheAgent) {
    const std::string body =
        "&key=123456789&email=&GatewayHost1=gw1&authToken=A&webServerName=host&firstTime=true&";
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
