#include "endtoend/JoinWorld.h"
#include "images/DiskImage.h"

#include <gtest/gtest.h>

namespace join::test {
namespace {

class DeliveredCopy : public testing::Test {
protected:
    DeliveredCopy() {
        world.installPrograms();
        fs::create_directories(world.home() + "/Applications");
        JoinWorld::copyJoinTo(downloads);
        writeFile(delivery + "/.joinparameters",
                  "TAVO_MEETING_IND\n&key=1234567890&email=&GatewayHost1=gw9&authToken=A&firstTime=true"
                  "&crashDetectorAppVersion=1.4&webServerName=" +
                      world.host() + "&");
    }
    ~DeliveredCopy() override { statusOf({.command = {"umount", "--lazy", stick}}); }

    /// Joins with the copy in that folder, and expects it to use the delivered parameters.
    void expectJoinFrom(const std::string& folder) const {
        Launch launch = world.launch({}, folder + "/Join.app");
        launch.environment.emplace_back("HOME", home);
        EXPECT_EQ(statusOf(launch), 0) << world.log();
        EXPECT_TRUE(world.agentRuns());
        EXPECT_EQ(count(contentsOf(world.support("joinparameters.conf")), "&firstTime=false&"), 1);
        EXPECT_EQ(count(contentsOf(world.support("tavojoindetails.conf")), "&authToken=A&"), 1);
        EXPECT_TRUE(world.isJoinInstalled());
    }

    JoinWorld world{{"--update-needed", "false"}};
    std::string home = world.home(); ///< or another path to it
    const std::string downloads = home + "/Downloads";
    const std::string delivery = home + "/delivery"; ///< becomes the volume
    const std::string stick = home + "/TavoJoin 7";
};

TEST_F(DeliveredCopy, OnAVolumeThatTheHelperHasLaidOutJoins) {
    JoinWorld::copyJoinTo(delivery);
    const std::string image = home + "/TavoJoin.dmg";
    tools::makeDiskImage(delivery, "TavoJoin", tools::ImageKind::udifZlib, image);
    fs::remove_all(delivery);
    const std::string hdiutil = std::string(JOIN_BUNDLE) + "/Contents/Helpers/hdiutil";
    ASSERT_EQ(world.run({hdiutil, "mount", image}), 0) << world.output();
    EXPECT_EQ(world.output(), "/Volumes/TavoJoin\n");
    // From the volume itself, and from elsewhere while it is there.
    expectJoinFrom(world.systemRoot() + "/Volumes/TavoJoin");
    fs::remove(world.support("joinparameters.conf"));
    fs::remove(home + "/tavo-standin/agent.txt");
    expectJoinFrom(downloads);
    EXPECT_TRUE(
        world.logHolds("Volume : /Volumes/TavoJoin, isRemovable :1, isWritable : 1, isUnmountable : 1"));
    // A reboot removes it.
    writeFile(world.systemRoot() + "/Volumes.boot", "another");
    const Child plain(world.launch({}, downloads + "/Join.app"));
    EXPECT_TRUE(world.logs("Join main window has been shown"));
    EXPECT_TRUE(fs::is_empty(world.systemRoot() + "/Volumes"));
}

TEST_F(DeliveredCopy, OnAMountedVolumeLendsItsParameters) {
    const std::string image = home + "/stick.img";
    ASSERT_EQ(world.run({"/usr/sbin/mke2fs", "-q", "-t", "ext4", "-d", delivery, image, "4M"}), 0)
        << world.output();
    fs::create_directory(stick);
    if (world.run({"mount", "-o", "loop,ro", image, stick}) != 0)
        GTEST_SKIP() << "no loop device can be mounted here: " << world.output();
    fs::create_directory_symlink(home, home + ".link");
    home += ".link/"; // the system reports mount points without links
    expectJoinFrom(downloads);
    EXPECT_TRUE(world.logHolds("Volume : " + stick + ", isRemovable :1, isWritable : 0, isUnmountable : 1"))
        << world.log();
}

} // namespace
} // namespace join::test
