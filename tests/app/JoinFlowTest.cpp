#include "install/InstalledPrograms.h"
#include "support/LogicTest.h"

namespace join::test {

class JoinFlow : public LogicTest {
protected:
    void SetUp() override { preparedToJoin(); }
    const std::string agentIdentifier = "com.tavo.fendel.Tavo";
    const std::string joinCheck = "-[AppDelegate joinAppVersionCheck]";
    const std::string agentCheck = "-[AppDelegate tavoAppVersionCheck]";
    const std::string detectorLaunch = "-[AppDelegate crashDetectorLaunch]";
    const std::string scselect = "run /usr/sbin/scselect in /";
    const std::string dump = "log: -[AppDelegate joinFeatureTrackTask:]_block_invoke : joinFeaturelogTask "
                             "output \nsaid by /usr/sbin/scselect";
    const std::string dumped =
        "log: -[AppDelegate joinFeatureTrackTask:] : joinFeaturelogTask called succesfully !!! ";
};

TEST_F(JoinFlow, AUrlWithCurrentVersionsStartsTheAgentThenTheCrashDetectorAndQuits) {
    installJoin("3.1");
    installAgent("2.0");
    installCrashDetector("1.4");
    workspace.running = agentIdentifier;
    http.expect(
        "https://host/api/public/json/meetings/checkSessionID?key=123456789&installed-version=2.0&os=mac",
        {200, R"({"response":{"result":{"meeting":{"update_needed":false}}}})", {}});
    EXPECT_THROW(urlEvents.deliver("tavojoin://k=123456789&e=ann@example.org&wsn=host&tav=9&jav=3.1&cav=1.4"),
                 Terminated);
    const std::string current = "log: " + agentCheck + " : This mac has latest Tavo App";
    EXPECT_EQ(said(agentCheck).front(), "Local Tavo App version : 2.0 Latest Tavo App version : 9");
    for (const std::string& line : logSink.lines) // once in a process, so perhaps in an earlier test
        EXPECT_TRUE(!line.ends_with("Object Allocated") ||
                    line == "+[ApiHandler getInstance] : Update Info Object Allocated");
    const std::string milestones = R"({"M1":"Join Launched time : 01:05:09","M2":"Session Validated : )"
                                   R"(01:05:09","M4":"Agent launched time : 01:05:09"})";
    EXPECT_EQ(
        Journal(std::ranges::find(journal, current), journal.end()),
        (Journal{
            current, "log: -[AppDelegate appLaunch] : App Path : /Applications", "create folder " + support,
            "log: +[MonitoringHandler addkey:value:] : Time stamp : " + milestones,
            "launch " + agent + " -timestamps " + milestones,
            "log: +[JoinUtils workspaceLaunchApplication:] : LaunchApplication: Tavo.app launched "
            "successfully with args : (-timestamps, " +
                milestones + ")",
            "log: -[AppDelegate appLaunch] : Tavo app file has been launched", scselect, dump, dumped,
            "TavoJoinWindow: out",
            "log: -[TavoJoinWindowHandler closeWindow] : TavoJoinWindowHandler.closeWindow() called!",
            "TavoJoinWindow: out", "start " + crashDetector + " in " + support,
            "log: " + detectorLaunch + " : Crash detector has been launched!", "TavoJoinWindow: out",
            "log: -[TavoJoinWindowHandler close] : Agent invoked successfully", sessionEnd, "terminate"}));
    EXPECT_EQ(agentDownloads() + joinDownloads(), 0);
}

TEST_F(JoinFlow, AnyJoinAppButTheAnnouncedOneIsDownloadedAndACurrentOneGoesOnAfterALaunchUrl) {
    const std::string missing =
        "Join.app file not found in Applications folder - starting JoinMac.dmg download";
    const std::string outdated = "Downloading latest Join.app";
    const std::string current = "This mac has latest join app";
    const struct {
        Text local, announced;
        bool byUrl;
        std::string outcome; ///< the last line
        const char* after;   ///< copies in /Applications and at home, downloads of both images
    } cases[] = {
        {"2.0.0", "2.0.0", true, current, "1 1 0 1"},
        {"2.0", std::nullopt, false, "Local Join App version : 2.0 Latest Join App version : 2.0", "1 1 0 0"},
        {"2.0.0.1", "2.0.0", false, outdated, "0 0 1 0"},
        {"2.0.0", "", true, outdated, "0 0 1 0"},
        {"(null)", "2.0.0", true, outdated, "0 0 1 0"},
        {std::nullopt, "2.0.0", false, missing, "0 1 1 0"},
    };
    http.refusesConnections = true;
    for (const auto& [local, announced, byUrl, outcome, after] : cases) {
        preparedToJoin();
        files.remove("/Applications/Join.app");
        files.putFolder(homeJoin);
        if (local)
            installJoin(*local);
        if (local == "(null)") // it does not say its version
            bundles.versions.clear();
        session().joinAppVersion.set(announced);
        slots().launchApp = byUrl;
        delegate.joinAppVersionCheck();
        EXPECT_EQ(said(joinCheck).front(),
                  local ? formatted("Local Join App version : %@ Latest Join App version : %@", local,
                                    announced ? announced : local)
                        : missing);
        EXPECT_EQ(said(joinCheck).back(), outcome);
        EXPECT_EQ(formatted("%d %d %d %d", files.exists("/Applications/Join.app"), files.exists(homeJoin),
                            joinDownloads(), agentDownloads()),
                  after);
    }
}

TEST_F(JoinFlow, AnOutdatedCrashDetectorGoesAndAFailedSessionCheckFetchesBothProgramsAnew) {
    installCrashDetector("1.4");
    installAgent("1.5");
    files.put(support + "TavoMac.dmg", "image");
    session().crashDetectorAppVersion.set("1.5");
    http.refusesConnections = true;
    delegate.versionCheckChain();
    EXPECT_TRUE(happenedInOrder(
        journal,
        {"remove " + crashDetector,
         "log: -[AppDelegate deleteOlderCrashDetector] : Crash Detector older version removed",
         "log: -[AppDelegate downloadCrashDetector] : CrashDetector is not available. Download crash "
         "detector Mount from tavoDmg file",
         "create " + joinDetails, "log: -[ApiHandler checkSessionApi] : Status code : 0", "remove " + agent,
         "remove " + support + "TavoMac.dmg", dumped}));
    EXPECT_EQ(session().tavoAppVersion(), "1.5");
    EXPECT_EQ(agentDownloads(), 1);
    EXPECT_EQ(countBeginningWith(journal, "launch "), 0);
    journal.clear();
    deleteOlderCrashDetector(); // there is none any more
    EXPECT_EQ(journal, Journal{});
}

TEST_F(JoinFlow, TheKindOfJoinFollowsTheKindOfSession) {
    for (const auto& [sessionType, firstRun, later] : {std::array{1, 0, 2}, {0, 1, 3}, {2, 3, 3}}) {
        session().sessionType.set(sessionType);
        session().setJoinTypeOf(JoinRun::first);
        EXPECT_EQ(session().joinType(), firstRun);
        session().setJoinTypeOf(JoinRun::later);
        EXPECT_EQ(session().joinType(), later);
    }
}

TEST_F(JoinFlow, TheCrashDetectorIsOutdatedUnlessItsEmbeddedVersionIsTheAnnouncedOne) {
    const std::string good = machImage(propertyList("CFBundleShortVersionString", "1.2.3"));
    const struct {
        std::string executable;
        Text local, announced;
        bool outdated;
    } cases[] = {
        {good, "1.2.3", "1.2.3", false},
        {good, "1.2.3", "1.2", true},
        {machImage("<plist><dict><key>CFBundleShortVersionString</key><array><string>1</string><false/>"
                   "<true/><integer>-7</integer><real>2.0</real><real>10.15</real>"
                   "<dict><key>a</key><real>1e300</real></dict></array></dict></plist>"),
         "(1, 0, 1, -7, 2, 10.15, {a = 1e+300; })", std::nullopt, false},
        {machImage(propertyList("CFBundleVersion", "1.2.3")), std::nullopt, "0", true},
        {machImage("<plist version=\"1.0\"><array/></plist>"), std::nullopt, std::nullopt, true},
        {"no executable", std::nullopt, "(null)", true},
        {"", std::nullopt, "1", true},
    };
    EXPECT_FALSE(delegate.isCrashDetectorUpdateNeeded()); // there is none
    for (const auto& [executable, local, announced, outdated] : cases) {
        files.put(crashDetector, executable);
        session().crashDetectorAppVersion.set(announced);
        EXPECT_EQ(delegate.isCrashDetectorUpdateNeeded(), outdated) << formatted("%@ %@", local, announced);
        EXPECT_EQ(said("-[AppDelegate isCrashDetectorUpdateNeeded]").back(),
                  formatted("Local Crash Detector App version : %@ Latest Crash Detector App version : %@",
                            local, announced));
        EXPECT_EQ(session().crashDetectorAppVersion(), announced ? announced : local);
    }
}

TEST_F(JoinFlow, TheCrashDetectorIsStartedOncePerRunAndEndsTheJoinAppEachTime) {
    installCrashDetector("1");
    delegate.crashDetectorLaunch(); // only beside the agent
    EXPECT_EQ(journal, Journal{});
    workspace.running = agentIdentifier;
    for (const bool fails : {true, false, false}) {
        tasks.fails = fails;
        EXPECT_THROW(notifications.post("LaunchCrashDetector"), Terminated);
    }
    EXPECT_EQ(countBeginningWith(journal, "start " + crashDetector + " in " + support), 2);
    EXPECT_EQ(said("Exception in " + detectorLaunch), Journal{"cannot start " + crashDetector});
    EXPECT_EQ(said(detectorLaunch), (Journal{"Crash detector has been launched!",
                                             "Crash Detector already launched for this session."}));
}

TEST_F(JoinFlow, AMissingCrashDetectorComesWithTheAgentImageAndTheJoinAppStays) {
    delegate.downloadCrashDetector(); // without an agent, its own download brings both
    installAgent("1");
    workspace.running = agentIdentifier;
    delegate.crashDetectorLaunch();
    session().isCrashDetectorDownloadStarted.set(true);
    delegate.crashDetectorLaunch();
    EXPECT_EQ(said("-[AppDelegate downloadCrashDetector]").size(), 1U);
    files.put(support + "TavoCrashDetectorMac.dmg", "image");
    EXPECT_THROW(delegate.crashDetectorLaunch(), Terminated); // even when the image brings none
    EXPECT_EQ(agentDownloads(), 1);
    const std::string missing = "Crash detector is not availble";
    EXPECT_EQ(said(detectorLaunch), (Journal{missing, missing, missing, "Crash detector dmg is availble"}));
}

TEST_F(JoinFlow, AMissingAgentIsDownloadedUntilSevenFailuresInARow) {
    session().cdnUrl.set("cdn");
    session().isCdnAvailable.set(true);
    session().isAwsAvailable.set(true);
    delegate.appLaunch();
    EXPECT_EQ(journal, (Journal{"log: -[AppDelegate appLaunch] : App Path : /Applications",
                                "create folder " + support, "log: tavo dmg not yet installed",
                                "infoLabel: [INSTALL_PROGRESS]", scselect, dump, dumped}));
    progressWindow().orderOut();
    EXPECT_TRUE(delegate.applicationShouldHandleReopen());
    const std::string failed = "log: -[TavoDMGDownloader download:didFailWithError:] : Download failed! ";
    for (int failure = 1; failure <= 7; ++failure) {
        mainQueue.turn();
        EXPECT_EQ(http.downloads.back().first.url,
                  failure <= 4 ? "https://cdn/TavoMac.dmg" : "https://host/agent/TavoMac.dmg");
        journal.clear();
        http.downloads.back().second->downloadDidFail({"cut off", "https://x/TavoMac.dmg"});
        EXPECT_EQ(session().isAwsAvailable(), failure < 4) << failure;
        const std::string retried = "log: -[AppDelegate retryDownloading] : Retrying dmg download! COUNT : ";
        EXPECT_TRUE(happenedInOrder(
            journal, {failed + "Error - cut off https://x/TavoMac.dmg ",
                      failed + "Whole Error - cut off (https://x/TavoMac.dmg)",
                      failure < 7 ? retried + std::to_string(failure) + " " : "infoLabel: [PROBLEM_OCCURED]",
                      failure < 7 ? "sleep 3000 ms" : "progress: stop"}));
    }
    EXPECT_TRUE(progressWindow().isVisible());
    notifications.post("RetryDMGDownloadig"); // the limit is not forgotten in this run
    EXPECT_EQ(sentComments, Journal(2, "Join App faild to download TavoMac.dmg"));
    EXPECT_EQ(agentDownloads(), 0); // no eighth attempt
}

} // namespace join::test
