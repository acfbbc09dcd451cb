#include "support/LogicTest.h"

namespace join::test {

class DiskImageInstall : public LogicTest {
protected:
    void SetUp() override {
        preparedToJoin();
        session().emailID.set("ann@example.org");
        tasks.statusOf = [this](const platform::Program& tool) {
            if (tool.arguments.at(0) != "mount")
                return files.remove(tool.arguments.at(1)) ? 0 : 1;
            for (const std::string& path : volume)
                files.put(path, "new");
            return volume.empty() ? 1 : 0;
        };
    }

    void downloadAgentImage() {
        delegate.tavoDmgDownloader->startDownLoadingTavoMacDmg();
        finishDownload();
    }
    void downloadJoinImage() {
        delegate.joinDmgDownloader->startDownLoadingJoinMacDmg();
        finishDownload();
    }

    const std::string agentImage = support + "TavoMac.dmg";
    const std::string mount = "run /usr/bin/hdiutil in / mount " + agentImage;
    const std::string detach = "run /usr/bin/hdiutil in / detach /Volumes/Tavo";
    const std::string launched =
        "log: -[TavoDMGDownloader copyAppFileAndLaunch] : App Path : " + agent + " tavo app file launched!";
    /// What appears when the image is mounted; an empty one cannot be.
    std::vector<std::string> volume = {"/Volumes/Tavo/Tavo.app/main", "/Volumes/Tavo/TavoCrashDetector"};
};

TEST_F(DiskImageInstall, BothProgramsAreInstalledAndTheAgentStartedBeforeJoinEnds) {
    files.put("/Volumes/Tavo/Tavo.app/stale", "left behind by an earlier run");
    EXPECT_THROW(downloadAgentImage(), Terminated);
    EXPECT_TRUE(happenedInOrder(
        journal, {"log: -[TavoDMGDownloader downloadDidBegin:] : downloadDidstarted",
                  "log: -[DiskImageDownloader downloadDidContinue:] : Download continues, bytes kept : 7",
                  "progress: 0.43 [DOWNLOADED]", "progress: turn",
                  "log: -[TavoDMGDownloader downloadDidFinish:] : downloadDidFinish",
                  "log: +[MonitoringHandler addkey:value:] : Time stamp : {\"M1\":\"Join Launched time : "
                  "01:05:09\",\"M3\":\"Agent downloaded time : 01:05:09 | Server : host\"}",
                  detach, mount,
                  "log: -[TavoDMGDownloader mountingTavoMacDmg] : dmg mount task termination status : 0",
                  "install /Volumes/Tavo/Tavo.app -> " + agent,
                  "log: -[TavoDMGDownloader copyAppFileAndLaunch] : Tavo.app file copied", launched,
                  "install /Volumes/Tavo/TavoCrashDetector -> " + crashDetector,
                  "log: -[TavoDMGDownloader copyCrashDetectorFile] : TavoCrashDetector file copied",
                  "remove " + agentImage, detach,
                  "log: -[TavoDMGDownloader unMountingTavoMacDmg] : Dmg unmount task termination status : 0",
                  "log: -[TavoJoinWindowHandler close] : Agent invoked successfully"}));
    EXPECT_EQ(countBeginningWith(journal, "launch " + agent), 1);
}

TEST_F(DiskImageInstall, OnlyWhatIsMissingIsCopied) {
    session().cdnUrl.set("cdn");
    session().isCdnAvailable.set(true);
    installAgent("1");
    EXPECT_THROW(downloadAgentImage(), Terminated);
    EXPECT_EQ(countBeginningWith(journal, "install ") + countBeginningWith(journal, detach), 2);
    EXPECT_EQ(countBeginningWith(journal, "launch "), 0);
    EXPECT_FALSE(files.exists(agentImage));
    EXPECT_EQ(slots().milestones.back().value.text()->substr(32), " | Server : CDN");

    files.remove(agent);
    EXPECT_THROW(downloadAgentImage(), Terminated);
    EXPECT_EQ(countBeginningWith(journal, "install "), 1);
    EXPECT_FALSE(files.exists(agentImage));

    session().retryCounter.set(3);
    downloadAgentImage(); // both are there now
    EXPECT_EQ(countBeginningWith(journal, "install ") + countBeginningWith(journal, detach), 0);
    EXPECT_EQ(session().retryCounter(), 0);
    EXPECT_FALSE(delegate.applicationShouldHandleReopen()); // no download is under way
}

TEST_F(DiskImageInstall, AnAgentThatCannotBeInstalledEndsNoJoinLeavesNoVolumeAndTheUserIsTold) {
    volume = {};
    downloadAgentImage();
    EXPECT_TRUE(happenedInOrder(
        journal, {"log: -[TavoDMGDownloader mountingTavoMacDmg] : dmg mount task termination status : 1",
                  launched, "infoLabel: [PROBLEM_OCCURED]", "progress: stop"}));
    EXPECT_EQ(countBeginningWith(journal, detach), 0);

    volume = {"/Volumes/Tavo/TavoCrashDetector"};
    downloadAgentImage();
    EXPECT_TRUE(happenedInOrder(journal, {mount, launched, detach, "infoLabel: [PROBLEM_OCCURED]"}));
    EXPECT_TRUE(files.exists(agentImage));
}

TEST_F(DiskImageInstall, ALaunchThatRaisesIsTriedThreeTimesAndSendsTheLogsOnce) {
    workspace.throws = true;
    const auto whole = std::exchange(volume, {});
    for (const std::size_t calls : {3U, 6U}) {
        downloadAgentImage();
        EXPECT_EQ(countBeginningWith(journal, "infoLabel: [PROBLEM_OCCURED]"), 2);
        EXPECT_EQ(said("-[TavoDMGDownloader copyAppFileAndLaunch]"),
                  Journal(calls, "TavoDMGDownloader copyAppFileAndLaunch is failed!"));
    }
    EXPECT_EQ(sentComments, Journal{"Tavo.app Copy file Failed"});

    volume = whole; // the copy succeeds, and the agent is started as a child process instead
    EXPECT_THROW(downloadAgentImage(), Terminated);
    files.remove(agent);
    bundles.versions[agent] = "1";
    EXPECT_THROW(downloadAgentImage(), Terminated);
    EXPECT_TRUE(happenedInOrder(journal, {"start " + agent + "/main in " + support}));
    EXPECT_EQ(said("-[JoinSessionDetails launchApplicationWith:Directory:]"),
              (Journal{banner("no bundle at " + agent),
                       "Tavo.app launched successfully from location : " + support}));
}

TEST_F(DiskImageInstall, JoinIsReinstalledInBothPlacesAndGoesOnWithTheAgent) {
    volume = {"/Volumes/TavoJoin/Join.app/main"};
    files.putFolder("/Applications");
    files.put(homeJoin + "/old", "old"); // a copy that is in the way is left alone
    installAgent("1");
    downloadJoinImage();
    EXPECT_TRUE(happenedInOrder(
        journal,
        {"log: -[JoinDMGDownloader downloadDidBegin:] : JoinMac.dmg downloadDidstarted",
         "log: -[JoinDMGDownloader downloadDidFinish:] : JoinMac.dmg downloadDidFinish",
         "run /usr/bin/hdiutil in / mount " + support + "JoinMac.dmg",
         "log: -[JoinDMGDownloader mountingJoinMacDmg] : JoinMac.dmg mount task termination status : 0",
         "create folder " + support, "install /Volumes/TavoJoin/Join.app -> /Applications/Join.app",
         "log: -[JoinDMGDownloader copyAppFile] : Join.app file copied to application folder",
         "run /usr/bin/hdiutil in / detach /Volumes/TavoJoin",
         "log: -[JoinDMGDownloader unMountingTavoJoinDmg] : JoinMac.dmg unmount task termination status : 0",
         "remove " + support + "JoinMac.dmg",
         "log: -[AppDelegate appLaunch] : Tavo app file has been launched"}));
    EXPECT_TRUE(files.exists(homeJoin + "/old"));
    files.remove(homeJoin);
    downloadJoinImage();
    EXPECT_EQ(said("-[JoinDMGDownloader copyAppFile]"),
              (Journal{"Join.app file copied to application folder",
                       "Join.app file copied to user application folder"}));
}

TEST_F(DiskImageInstall, ADownloadBeginsOnATurnOfTheLoopFromTheSourceOfThatTimeEvenIfAnEarlierOneCouldNot) {
    const std::string agentStart = "-[TavoDMGDownloader startDownLoadingTavoMacDmg]";
    const std::string joinStart = "-[JoinDMGDownloader startDownLoadingJoinMacDmg]";
    const std::string begins = agentStart + "_block_invoke : ";
    http.refusesConnections = true;
    delegate.joinDmgDownloader->startDownLoadingJoinMacDmg();
    delegate.joinDmgDownloader->startDownLoadingJoinMacDmg();
    delegate.tavoDmgDownloader->startDownLoadingTavoMacDmg();
    mainQueue.turn();
    http.refusesConnections = false;
    files.put("/System/Library/CoreServices/SystemVersion.plist",
              "<plist version=\"1.0\"><dict><key>ProductName</key><string>Debian GNU/Linux</string>"
              "<key>ProductVersion</key><string>12</string></dict></plist>");
    delegate.tavoDmgDownloader->startDownLoadingTavoMacDmg();
    delegate.tavoDmgDownloader->startDownLoadingTavoMacDmg();
    session().cdnUrl.set("cdn");
    session().isCdnAvailable.set(true);
    EXPECT_TRUE(http.downloads.empty());
    mainQueue.turn();
    EXPECT_EQ(
        logSink.lines,
        (Journal{joinStart + " : JoinMac.dmg is being downloaded already",
                 joinStart + "_block_invoke : Join Dmg Url : "
                             "https://host/join-session?key=123456789&role=agent&email=ann@example.org",
                 "system version details (null)", "system version : (null)", "joinMac.dmg  download failed",
                 begins + "Tavo Dmg Url : https://host/agent/TavoMac.dmg",
                 begins + "System version details (null)", begins + "System version : (null)",
                 begins + "Download failed", agentStart + " : TavoMac.dmg is being downloaded already",
                 begins + "Tavo Dmg Url : https://cdn/TavoMac.dmg",
                 begins + "System version details Debian GNU/Linux", begins + "System version : 12",
                 "destination path : " + agentImage}));
    ASSERT_EQ(http.downloads.size(), 1U);
    const platform::DownloadRequest& request = http.downloads.back().first;
    EXPECT_EQ(request.userAgent, "Debian GNU/Linux 12");
    EXPECT_EQ(request.destination, agentImage);
    EXPECT_EQ(request.stallTimeout, std::chrono::seconds(240));
}

TEST_F(DiskImageInstall, AFailedJoinImageIsNotFetchedAgainAndSendsTheLogsOnce) {
    for (int time = 0; time < 2; ++time) {
        delegate.joinDmgDownloader->startDownLoadingJoinMacDmg();
        mainQueue.turn();
        http.downloads.back().second->downloadDidFail({"refused", "https://host/"});
        EXPECT_EQ(sentComments, Journal{"Join App faild to download JoinMac.dmg"});
    }
    for (const std::string line : {"Join Dmg Url", "none"}) { // the first cannot be logged
        logSink.throwsOnceOn = line;
        delegate.joinDmgDownloader->startDownLoadingJoinMacDmg();
        mainQueue.turn();
    }
    EXPECT_EQ(joinDownloads(), 3);
    EXPECT_EQ(said("-[JoinDMGDownloader download:didFailWithError:]"),
              Journal(2, "JoinMac.dmg Download failed! Error - refused https://host/ "));
}

} // namespace join::test
