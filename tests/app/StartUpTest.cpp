#include "support/LogicTest.h"

namespace join::test {

class StartUp : public LogicTest {};

const std::string finished = "-[AppDelegate applicationDidFinishLaunching:]";

TEST_F(StartUp, DoesItsStepsInOrder) {
    delegate.awakeFromNib();
    EXPECT_EQ(Journal(journal.begin(), std::ranges::find(journal, "load TavoJoinWindow")),
              (Journal{"log: +[MonitoringHandler addkey:value:] : Time stamp : "
                       R"({"M1":"Join Launched time : 01:05:09"})",
                       "create folder /home/ann/Library/Logs//TavoFendel/",
                       "create folder /home/ann/Library/Logs//TavoFendel/Join/", "redirect",
                       "/home/ann/Library/Logs//TavoFendel/Join/join.log", "timer 100 ms",
                       "default handler of tavojoin: com.tavo.join", "URL handler",
                       "log: -[AppDelegate awakeFromNib] : apple event manger initiated from awakefeomnib !!",
                       "create folder " + support,
                       "log: +[JoinSessionDetails setDefaultValues] : Setting default values ...",
                       "log: +[JoinSessionDetails getInstance] : Update Info Object Allocated",
                       "log: +[JoinSessionDetails setDefaultValues] : Default values are set"}));
    EXPECT_EQ(journal.back(), "TavoJoinWindow: front");
    journal.clear();
    delegate.applicationWillFinishLaunching();
    EXPECT_EQ(journal, (Journal{"default handler of tavojoin: com.tavo.join", "URL handler",
                                "log: -[AppDelegate applicationWillFinishLaunching:] : apple event manger "
                                "initiated from will finish!!"}));
}

TEST_F(StartUp, WhatAPowerCutHasLeftEmptyIsMissing) {
    for (const std::string& path : {agent + "/Contents/MacOS/Tavo", homeJoin + "/Info", crashDetector})
        files.put(path, ""); // of the bundles nothing can be read
    delegate.awakeFromNib();
    const std::string damaged = " was damaged and has been removed";
    EXPECT_EQ(said("-[AppDelegate awakeFromNib]"),
              (Journal{homeJoin + damaged, agent + damaged, crashDetector + damaged,
                       "apple event manger initiated from awakefeomnib !!"}));
}

TEST_F(StartUp, BeforeSystem10_9ThereIsOnlyTheErrorWindowAndALaunchUrlTouchesNothing) {
    const std::pair<platform::SystemVersion, bool> cases[] = {
        {{10, 8}, false}, {{0, 0}, false}, {{10, 9}, true}, {{10, 15}, true}, {{11, 0}, true}};
    for (const auto& [version, supported] : cases) {
        application.version = version;
        prepared();
        EXPECT_EQ(delegate.errorWindow == nullptr, supported) << version.major << '.' << version.minor;
        EXPECT_EQ(files.exists("/home"), supported);
        if (supported)
            continue;
        delegate.applicationDidFinishLaunching();
        urlEvents.deliver("tavojoin://k=123456789");
        EXPECT_EQ(journal,
                  Journal{"log: -[AppDelegate handleGetURLEvent:withReplyEvent:] : Launch URL ignored: "
                          "nothing is prepared on a system that is not supported"});
    }
}

TEST_F(StartUp, WithoutUrlAndWithoutAFirstRunItAsksForAKeyAndHeedsTheKeyWindow) {
    prepared();
    files.put(parameters, header + "&firstTime=TRUE&");
    delegate.applicationDidFinishLaunching();
    notifications.post("ReadJoinParameters");
    notifications.post("ModifyJoinDetails", "an object");
    const std::string read = "log: -[AppDelegate readJoinParameters] : Read join parameters called.";
    EXPECT_TRUE(
        happenedInOrder(journal, {read, "TavoJoinWindow: out", "TavoJoinMainWindow: front", read,
                                  "log: -[AppDelegate modifyJoinDetails] : Modify joindetails called!"}));
    EXPECT_EQ(said(finished), (Journal{"Join bundle Path : /Applications", "Join main window has been shown",
                                       "Launch app called : 0 "}));
    EXPECT_EQ(agentDownloads(), 0);
    delegate.applicationDidFinishLaunching();
    EXPECT_EQ(std::ranges::count(journal, "TavoJoinWindow: out"), 1);
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
    application.bundle = "/Volumes/TavoJoin/Join.app";
    http.refusesConnections = true;
    for (const std::string email : {"", "email=&", "email=(null)&"}) {
        const std::string body =
            "&key=123456789&" + email + "GatewayHost1=gw1&authToken=A&webServerName=host&firstTime=true&";
        files.put("/Volumes/TavoJoin/.joinparameters", header + body);
        prepared();
        delegate.applicationDidFinishLaunching();

        const std::string rewritten = header +
                                      "&key=123456789&gatewayName=(null)&defaultGatewayName=gw1&email=Guest"
                                      "&webServerName=host&tavoAppVersion=(null)&firstTime=false"
                                      "&joinAppVersion=(null)&";
        EXPECT_EQ(files.read(parameters), rewritten);
        EXPECT_EQ(files.read(joinDetails),
                  header + "&authToken=A&gatewayName=(null)&defaultGatewayName=gw1&webServerName=host"
                           "&isDemoMode=false&isDemoTech=false&group=null&email=Guest&key=123456789&");
        EXPECT_EQ(
            said(finished),
            (Journal{"Join bundle Path : /Volumes/TavoJoin", "Join.app installed first time.",
                     "Joinparameters String : " + rewritten,
                     "FirstTime parameter value has been changed to false.", "Launch app called : 0 "}));
        EXPECT_EQ(said("-[AppDelegate createTavoJoinDetails]"),
                  (Journal{"JoinParameters : \n" + body, "tavojoindetails.conf created",
                           "tavojoindetails : \n" + header + body}));
        EXPECT_TRUE(happenedInOrder(journal, {"remove " + parameters, "create " + parameters}));
        EXPECT_EQ(said("-[AppDelegate tavoAppVersionCheck]").front(),
                  "Tavo app not found, Setting app version to zero ( default)");
        EXPECT_EQ(session().joinType(), 2);
        EXPECT_EQ(agentDownloads(), 1);
        EXPECT_FALSE(delegate.firstTimeCheck());
    }
}

TEST_F(StartUp, AParameterFileWithARefusedServerChangesNothingButTheWindow) {
    const std::string refused =
        header + "&key=123456789&webServerName=host&firstTime=true&webServerName=evil&";
    const std::string refusal = "Join parameters file refused : evil is refused";
    application.bundle = "/Volumes/TavoJoin/Join.app";
    files.put("/Volumes/TavoJoin/.joinparameters", refused);
    files.put(parameters, header + "stored earlier");
    prepared();
    delegate.applicationDidFinishLaunching();
    EXPECT_EQ(files.read(parameters), header + "stored earlier");
    EXPECT_EQ(said("-[AppDelegate copyCurrentJoinAppFile]").back(), refusal);
    EXPECT_EQ(slots().joinParametersTavoJoinFilePath, "");
    EXPECT_TRUE(happenedInOrder(journal, {"infoLabel: [LINK_NOT_ALLOWED]"}));
    EXPECT_FALSE(windows.loaded.contains("TavoJoinMainWindow"));
    files.put(parameters, refused);
    EXPECT_FALSE(delegate.firstTimeCheck());
    EXPECT_EQ(session().webServerName(), "join.example.com");
    EXPECT_EQ(said("-[AppDelegate readJoinParameters]").back(), refusal);
}

TEST_F(StartUp, EveryOperationReportsAnExceptionUnderItsOwnNameAndReturns) {
    files.putFolder("/Volumes/Tavo");
    files.put("/Applications/.joinparameters", header + "&firstTime=true&");
    const auto runAll = [&](const std::string& failing) {
        files.remove(parameters);
        preparedToJoin();
        installCrashDetector("1");
        installAgent("1");
        logSink.throwsOnceOn = failing;
        timers.failsOnce = true;
        bundles.failsOnce = true;
        http.refusesConnections = true;
        delegate.awakeFromNib();
        delegate.applicationWillFinishLaunching();
        delegate.applicationDidFinishLaunching();
        urlEvents.deliver("tavojoin://k=1");
        delegate.retryDownloading();
        delegate.appLaunch();
        http.refusesConnections = false;
        notifications.post("SendJoinLog");
        mainQueue.turn();
        files.remove(agent);
        files.remove(crashDetector);
        for (const auto& [request, downloader] : std::exchange(http.downloads, {}))
            downloader->downloadDidFinish();
        delegate.joinDmgDownloader->startDownLoadingJoinMacDmg();
        delegate.tavoJoinWindow = std::make_unique<TavoJoinWindowHandler>();
        windows.failsOnce = true;
        EXPECT_TRUE(delegate.applicationShouldHandleReopen());
        mainQueue.turn(); // the next run has a delegate of its own
        http.downloads.clear();
    };
    const std::string full = "the log is full";
    const auto exceptionIn = [&](const std::string& name) { return "Exception in " + name + " : " + full; };
    const std::string zip = "-[AppDelegate zipDirectoryWithPath:] : ";
    const std::string send = "-[AppDelegate sendLogFiles:]";
    const std::string get = "-[AppDelegate getFileDataWith:] : ";
    const std::string unmounting = "-[TavoDMGDownloader unMountingTavoMacDmg] : ";
    // by what the line holds that cannot be logged
    std::map<std::string, std::string> reports = {
        {"redirect", exceptionIn("-[AppDelegate loggingFile:]")},
        {"Joinparameters String", exceptionIn(finished)},
        {send + "_block_invoke : ", exceptionIn(send + "_block_invoke")},
        {send + " : ", send + " : " + banner(full)},
        {zip, zip + "**************** EXCEPTION ***************** : " + full + " "},
        {get, get + "Exception occured in LogHandler.getFileDataWith() : " + full + " "},
        {"LaunchApplication", " Exception in PingServer.launchApplicationWith() : " + full},
        {"Tavo Dmg Url", exceptionIn("-[DiskImageDownloader start]")},
        {": dmg mount", exceptionIn("-[TavoDMGDownloader mountingTavoMacDmg]")},
        {": Dmg unmount", unmounting + "Exception in TavoDMGDownloader.unmountingTavoMacDmg() : " + full},
        {"JoinMac.dmg mount", exceptionIn("-[JoinDMGDownloader mountingJoinMacDmg]")},
        {"JoinMac.dmg unmount", exceptionIn("-[JoinDMGDownloader unMountingTavoJoinDmg]")}};
    runAll("no line");
    for (const std::string& line : logSink.lines)
        if (const std::string name = line.substr(0, line.find(" : ")); name.starts_with("-[AppDelegate "))
            reports.try_emplace(name + " : ", exceptionIn(name.substr(0, name.find("_block"))));
    EXPECT_EQ(reports.size(), 31U);
    for (const auto& [failing, report] : reports) {
        runAll(failing);
        EXPECT_EQ(std::ranges::count(logSink.lines, report), 1) << failing;
    }
    for (const char* report :
         {"startLoggingTimer] : no more timers", "embeddedPlistV2:] : unreadable",
          "applicationShouldHandleReopen:hasVisibleWindows:] : no interface file TavoJoinWindow"})
        EXPECT_EQ(std::ranges::count(logSink.lines, std::string("Exception in -[AppDelegate ") + report), 1);
}

} // namespace join::test
