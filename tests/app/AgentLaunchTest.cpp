#include "install/InstalledPrograms.h"
#include "support/LogicTest.h"

namespace join::test {

class AgentLaunch : public LogicTest {};

TEST_F(AgentLaunch, AUrlWithCurrentVersionsStartsTheAgentThenTheCrashDetectorAndQuits) {
    prepared();
    installJoin("3.1");
    installAgent("2.0");
    installCrashDetector("1.4");
    workspace.running = {"com.tavo.fendel.Tavo"};
    expectSessionCheck("2.0", R"("update_needed":false)");
    EXPECT_THROW(urlEvents.deliver("tavojoin://k=123456789&e=ann@example.org&wsn=host&tav=9&jav=3.1&cav=1.4"),
                 Terminated);

    ASSERT_EQ(workspace.launches.size(), 1U);
    ASSERT_EQ(workspace.launches[0].size(), 2U);
    EXPECT_EQ(workspace.launches[0][0], "-timestamps");
    const auto milestones = json.parse(workspace.launches[0][1]); // whose order says nothing
    ASSERT_TRUE(milestones);
    EXPECT_EQ(milestones->dictionary()->size(), 3U);
    EXPECT_EQ(*milestones->member("M1")->text(), "Join Launched time : 01:05:09");
    EXPECT_EQ(*milestones->member("M2")->text(), "Session Validated : 01:05:09");
    EXPECT_EQ(*milestones->member("M4")->text(), "Agent launched time : 01:05:09");
    EXPECT_TRUE(happenedInOrder(
        journal,
        {"log: -[AppDelegate handleGetURLEvent:withReplyEvent:] : Modify join details by Launch App",
         "create " + joinDetails,
         ("log: -[AppDelegate joinAppVersionCheck] : Local Join App version : 3.1 "
          "Latest Join App version : 3.1"),
         ("log: -[AppDelegate isCrashDetectorUpdateNeeded] : Local Crash Detector App version : 1.4 "
          "Latest Crash Detector App version : 1.4"),
         "log: -[AppDelegate tavoAppVersionCheck] : Local Tavo App version : 2.0 Latest Tavo App version : 9",
         "log: -[AppDelegate tavoAppVersionCheck] : This mac has latest Tavo App",
         "log: -[AppDelegate appLaunch] : App Path : /Applications", "create folder " + support,
         "launch " + agent, "log: -[AppDelegate appLaunch] : Tavo app file has been launched",
         "run /usr/sbin/scselect in /", "TavoJoinWindow: out",
         "log: -[TavoJoinWindowHandler closeWindow] : TavoJoinWindowHandler.closeWindow() called!",
         "start " + crashDetector + " in " + support,
         "log: -[AppDelegate crashDetectorLaunch] : Crash detector has been launched!",
         "log: -[TavoJoinWindowHandler close] : Agent invoked successfully", "terminate"}));
    EXPECT_EQ(countBeginningWith(journal, "start "), 1);
    EXPECT_EQ(agentDownloads() + joinDownloads(), 0);
}

TEST_F(AgentLaunch, AnAgentThatIsNotRunningYetKeepsTheJoinAppUp) {
    prepared();
    installAgent("2.0");
    installCrashDetector("1.4");
    workspace.running = {"com.tavo.fendel.Tavo.helper"};
    delegate.appLaunch();
    EXPECT_EQ(workspace.launches.size(), 1U);
    EXPECT_FALSE(delegate.applicationShouldHandleReopen());
    EXPECT_FALSE(progressWindow().isVisible());
    EXPECT_EQ(countBeginningWith(journal, "start "), 0);
    EXPECT_EQ(said("-[AppDelegate crashDetectorLaunch]"), Journal{});
}

TEST_F(AgentLaunch, AMissingAgentIsDownloadedWithTheProgressWindowOpen) {
    prepared();
    delegate.appLaunch();
    EXPECT_EQ(agentDownloads(), 1);
    EXPECT_EQ(countBeginningWith(journal, "run /usr/sbin/scselect"), 1);
    EXPECT_TRUE(workspace.launches.empty());
    EXPECT_TRUE(progressWindow().isVisible());
    progressWindow().orderOut();
    EXPECT_TRUE(delegate.applicationShouldHandleReopen());
    EXPECT_TRUE(progressWindow().isVisible());
    EXPECT_EQ(std::ranges::count(logSink.lines, "tavo dmg not yet installed"), 1);
}

TEST_F(AgentLaunch, ARefusedLaunchCountsAsOneButAnExceptionDoesNot) {
    EXPECT_TRUE(workspaceLaunchApplication("/opt/Tavo.app"));
    EXPECT_EQ(
        logSink.lines.back(),
        "+[JoinUtils workspaceLaunchApplication:] : LaunchApplication: Tavo.app launched successfully with args "
        R"(: (-timestamps, {"M4":"Agent launched time : 01:05:09"}))");
    logSink.throwsOnceOn = "Time stamp";
    EXPECT_FALSE(workspaceLaunchApplication("/opt/Tavo.app"));
    EXPECT_EQ(logSink.lines.back(), " Exception in PingServer.launchApplicationWith() : the log is full");
}

} // namespace join::test
