#include "install/InstalledPrograms.h"
#include "support/LogicTest.h"

namespace join::test {

class CrashDetector : public LogicTest {
protected:
    void SetUp() override {
        prepared();
        workspace.running = {"com.tavo.fendel.Tavo"};
    }
    Journal lines() { return said("-[AppDelegate crashDetectorLaunch]"); }
};

TEST_F(CrashDetector, IsStartedOncePerRunAndEndsTheJoinAppEachTime) {
    installCrashDetector("1");
    EXPECT_THROW(delegate.crashDetectorLaunch(), Terminated);
    EXPECT_THROW(delegate.crashDetectorLaunch(), Terminated);
    EXPECT_EQ(std::ranges::count(journal, "start " + crashDetector + " in " + support), 1);
    EXPECT_EQ(lines(), (Journal{"Crash detector has been launched!",
                                "Crash Detector already launched for this session."}));
}

TEST_F(CrashDetector, OneThatCannotBeStartedEndsTheJoinAppToo) {
    installCrashDetector("1");
    tasks.fails = true;
    EXPECT_THROW(delegate.crashDetectorLaunch(), Terminated);
    EXPECT_EQ(
        std::ranges::count(logSink.lines,
                           "Exception in -[AppDelegate crashDetectorLaunch] : cannot start " + crashDetector),
        1);
}

TEST_F(CrashDetector, AMissingOneComesWithTheAgentImageAndTheJoinAppStays) {
    delegate.downloadCrashDetector(); // without an agent, its own download brings both
    EXPECT_EQ(agentDownloads(), 0);
    installAgent("1");
    delegate.crashDetectorLaunch();
    EXPECT_EQ(agentDownloads(), 1);
    EXPECT_EQ(said("-[AppDelegate downloadCrashDetector]"),
              Journal{"CrashDetector is not available. Download crash detector Mount from tavoDmg file"});
    session().isCrashDetectorDownloadStarted.set(true);
    delegate.crashDetectorLaunch();
    files.put(support + "TavoCrashDetectorMac.dmg", "image");
    EXPECT_THROW(delegate.crashDetectorLaunch(), Terminated); // even when the image brings none
    EXPECT_EQ(agentDownloads(), 1);
    EXPECT_EQ(lines().back(), "Crash detector dmg is availble");
}

TEST_F(CrashDetector, AnOlderOneIsRemovedAndAMissingOneNotSpokenOf) {
    deleteOlderCrashDetector();
    EXPECT_EQ(journal, Journal{});
    installCrashDetector("1");
    deleteOlderCrashDetector();
    EXPECT_EQ(
        journal,
        (Journal{"remove " + crashDetector,
                 "log: -[AppDelegate deleteOlderCrashDetector] : Crash Detector older version removed"}));
}

} // namespace join::test
