#include "server/VersionDecisions.h"

#include "support/LogicTest.h"
#include "support/MachOImage.h"

namespace join::test {

class VersionChecks : public LogicTest {
protected:
    void SetUp() override { preparedToJoin(); }
    const std::string joinCheck = "-[AppDelegate joinAppVersionCheck]";
    const std::string agentCheck = "-[AppDelegate tavoAppVersionCheck]";
};

TEST(VersionDecisions, AnyVersionButTheAnnouncedOneIsOutdated) {
    const struct {
        Text local, announced;
        JoinAppStep joinApp; ///< after a launch URL
        bool crashDetectorOutdated;
    } cases[] = {
        {"2.0.0", "2.0.0", JoinAppStep::goOn, false},
        {"2.0.0", std::nullopt, JoinAppStep::goOn, false},
        {"2.0", "2.0.0", JoinAppStep::downloadInstead, true},
        {"2.0.0.1", "2.0.0", JoinAppStep::downloadInstead, true},
        {"2.0.0", "", JoinAppStep::downloadInstead, true},
        {std::nullopt, "2.0.0", JoinAppStep::download, true},
        {std::nullopt, std::nullopt, JoinAppStep::download, true},
    };
    for (const auto& [local, announced, step, outdated] : cases) {
        EXPECT_EQ(joinAppStep(local, announced, true), step) << formatted("%@ %@", local, announced);
        EXPECT_EQ(joinAppStep(local, announced, false),
                  step == JoinAppStep::goOn ? JoinAppStep::waitForLaunchUrl : step);
        EXPECT_EQ(isCrashDetectorOutdated(local, announced), outdated);
    }
}

TEST_F(VersionChecks, AnotherJoinVersionRemovesBothCopiesAndDownloadsTheImage) {
    files.putFolder("/Applications/Join.app"); // which does not say its version
    files.putFolder(homeJoin);
    session().joinAppVersion.set("2.0.0");
    slots().launchApp = true;
    delegate.joinAppVersionCheck();
    EXPECT_TRUE(happenedInOrder(journal, {"remove /Applications/Join.app", "remove " + homeJoin}));
    EXPECT_EQ(said(joinCheck), (Journal{"Local Join App version : (null) Latest Join App version : 2.0.0",
                                        "Downloading latest Join.app"}));
    EXPECT_EQ(joinDownloads(), 1);
    EXPECT_EQ(said(agentCheck), Journal{});
}

TEST_F(VersionChecks, AMissingJoinAppIsDownloadedWhateverTheHomeCopyIs) {
    files.putFolder(homeJoin);
    delegate.joinAppVersionCheck();
    EXPECT_EQ(joinDownloads(), 1);
    EXPECT_TRUE(files.exists(homeJoin));
}

TEST_F(VersionChecks, ACurrentJoinAppGoesOnOnlyAfterALaunchUrl) {
    installJoin("2.0");
    delegate.joinAppVersionCheck();
    EXPECT_EQ(session().joinAppVersion(), "2.0");
    EXPECT_EQ(said(agentCheck), Journal{});
    slots().launchApp = true;
    expectSessionCheck("0", "");
    delegate.joinAppVersionCheck();
    EXPECT_TRUE(happenedInOrder(logSink.lines,
                                {agentCheck + " : Tavo app not found, Setting app version to zero ( default)",
                                 joinCheck + " : This mac has latest join app"}));
    EXPECT_EQ(agentDownloads(), 1);
}

TEST_F(VersionChecks, AFailedSessionCheckFetchesTheAgentAnew) {
    installAgent("1.5");
    files.put(support + "TavoMac.dmg", "image");
    http.expect(
        "https://host/api/public/json/meetings/checkSessionID?key=123456789&installed-version=1.5&os=mac",
        {503, "", {}});
    delegate.tavoAppVersionCheck();
    EXPECT_EQ(session().tavoAppVersion(), "1.5");
    EXPECT_EQ(said(agentCheck), Journal{"Local Tavo App version : 1.5 Latest Tavo App version : 1.5"});
    EXPECT_TRUE(happenedInOrder(
        journal, {"create " + joinDetails, "log: -[ApiHandler checkSessionApi] : Status code : 503",
                  "remove " + agent, "remove " + support + "TavoMac.dmg", "run /usr/sbin/scselect in /"}));
    EXPECT_EQ(agentDownloads(), 1);
    EXPECT_TRUE(workspace.launches.empty());
}

TEST_F(VersionChecks, TheKindOfJoinFollowsTheKindOfSession) {
    const struct { int sessionType, firstRun, later; } cases[] = {{1, 0, 2}, {0, 1, 3}, {2, 9, 9}};
    for (const auto& [sessionType, firstRun, later] : cases) {
        session().sessionType.set(sessionType);
        session().joinType.set(9);
        session().setJoinTypeOf(JoinRun::first);
        EXPECT_EQ(session().joinType(), firstRun);
        expectSessionCheck("0", "");
        delegate.tavoAppVersionCheck();
        EXPECT_EQ(session().joinType(), later);
    }
}

TEST_F(VersionChecks, TheCrashDetectorIsOutdatedUnlessItsEmbeddedVersionIsTheAnnouncedOne) {
    const std::string good = machImage(propertyList("CFBundleShortVersionString", "1.2.3"));
    const auto versioned = [](const std::string& value) {
        return machImage("<plist><dict><key>CFBundleShortVersionString</key>" + value + "</dict></plist>");
    };
    const std::string noVersion = machImage(propertyList("CFBundleVersion", "1.2.3"));
    EXPECT_FALSE(delegate.isCrashDetectorUpdateNeeded()); // there is none
    struct {
        std::string executable;
        Text announced;
        bool outdated;
        Text announcedAfter;
    } const cases[] = {
        {good, "1.2.3", false, "1.2.3"},
        {good, "1.2", true, "1.2"},
        {good, std::nullopt, false, "1.2.3"},
        {versioned("<real>2.0</real>"), std::nullopt, false, "2"},
        {versioned("<real>10.15</real>"), "10.15", false, "10.15"},
        {versioned("<integer>-7</integer>"), std::nullopt, false, "-7"},
        {versioned("<true/>"), std::nullopt, false, "1"},
        {versioned("<array><string>1</string><false/></array>"), std::nullopt, false, "(1, 0)"},
        {versioned("<dict><key>a</key><real>1e300</real></dict>"), std::nullopt, false, "{a = 1e+300; }"},
        {noVersion, "0", true, "0"},
        {noVersion, std::nullopt, true, std::nullopt},
        {machImage("<plist version=\"1.0\"><array/></plist>"), std::nullopt, true, std::nullopt},
        {machImage("<plist><dict><key>A"), "1", true, "1"},
        {"no executable", "(null)", true, "(null)"},
        {"", "1", true, "1"},
    };
    for (const auto& [executable, announced, outdated, announcedAfter] : cases) {
        files.put(crashDetector, executable);
        session().crashDetectorAppVersion.set(announced);
        EXPECT_EQ(delegate.isCrashDetectorUpdateNeeded(), outdated) << announced.value_or("absent");
        EXPECT_EQ(session().crashDetectorAppVersion(), announcedAfter);
    }
    EXPECT_EQ(logSink.lines.back(),
              "-[AppDelegate isCrashDetectorUpdateNeeded] : Local Crash Detector App version : "
              "(null) Latest Crash Detector App version : 1");
}

TEST_F(VersionChecks, SevenFailuresInARowEndTheDownload) {
    session().cdnUrl.set("cdn");
    session().isCdnAvailable.set(true);
    session().isAwsAvailable.set(true);
    delegate.tavoDmgDownloader->startDownLoadingTavoMacDmg();
    for (int failure = 1; failure <= 7; ++failure) {
        mainQueue.turn();
        EXPECT_EQ(http.downloads.back().first.url,
                  failure <= 4 ? "https://cdn/TavoMac.dmg" : "https://host/agent/TavoMac.dmg");
        journal.clear();
        http.downloads.back().second->downloadDidFail({"cut off", "https://x/TavoMac.dmg"});
        EXPECT_EQ(session().retryCounter(), failure);
        EXPECT_EQ(session().isAwsAvailable(), failure < 4) << failure;
        if (failure < 7) {
            EXPECT_TRUE(happenedInOrder(
                journal,
                {"log: -[TavoDMGDownloader download:didFailWithError:] : Download failed! Error - cut off "
                 "https://x/TavoMac.dmg ",
                 "log: -[TavoDMGDownloader download:didFailWithError:] : Download failed! Whole Error - cut off "
                 "(https://x/TavoMac.dmg)",
                 formatted("log: -[AppDelegate retryDownloading] : Retrying dmg download! COUNT : %d ",
                           failure),
                 "sleep 3000 ms"}));
        }
    }
    EXPECT_TRUE(happenedInOrder(journal, {"infoLabel: [PROBLEM_OCCURED]", "progress: stop"}));
    EXPECT_EQ(agentDownloads(), 0); // no eighth attempt
    EXPECT_TRUE(progressWindow().isVisible());
    notifications.post("RetryDMGDownloadig"); // the limit is not forgotten in this run
    EXPECT_EQ(sentComments, Journal(2, "Join App faild to download TavoMac.dmg"));
    EXPECT_EQ(agentDownloads(), 0);
}

} // namespace join::test
