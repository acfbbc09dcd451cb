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
    }

    /// Joins with the copy in that folder, and expects it to use the delivered parameters.
    void expectJoinFrom(const std::string& folder) const {
        Launch launch = world.launch({}, folder + "/Join.app");
        launch.environment.emplace_back("HOME", home);
        EXPECT_EQ(statusOf(launch), 0) << world.log();
        EXPECT_TRUE(world.agentRuns());
        const std::string stored = contentsOf(world.support("joinparameters.conf"));
        EXPECT_NE(stored.find("&email=Guest&"), std::string::npos) << stored;
        EXPECT_NE(stored.find("&firstTime=false&"), std::string::npos) << stored;
        EXPECT_NE(contentsOf(world.support("tavojoindetails.conf")).find("&authToken=A&"), std::string::npos);
        for (const std::string& copy : {world.systemRoot(), world.home()})
            EXPECT_EQ(::access((copy + "/Applications/Join.app/Contents/MacOS/Join").c_str(), X_OK), 0);
    }

    JoinWorld world{{"--update-needed", "false"}};
    std::string home = world.home(); ///< or another path to it
};

TEST_F(DeliveredCopy, OnAVolumeThatTheHelperHasLaidOutJoins) {
    JoinWorld::copyJoinTo(world.home() + "/delivery");
    world.deliverParametersTo(world.home() + "/delivery");
    const std::string image = world.home() + "/TavoJoin.dmg";
    tools::makeDiskImage(world.home() + "/delivery", "TavoJoin", tools::ImageKind::udifZlib, image);
    fs::remove_all(world.home() + "/delivery");
    Launch mount = world.launch({"mount", image});
    mount.command.front() = std::string(JOIN_BUNDLE) + "/Contents/Helpers/hdiutil";
    ASSERT_EQ(statusOf(mount), 0) << world.output();
    EXPECT_EQ(world.output(), "/Volumes/TavoJoin\n");
    // From the volume itself, and from elsewhere while it is there.
    expectJoinFrom(world.systemRoot() + "/Volumes/TavoJoin");
    fs::remove(world.support("joinparameters.conf"));
    fs::remove(world.home() + "/tavo-standin/agent.txt");
    JoinWorld::copyJoinTo(world.home() + "/Downloads");
    expectJoinFrom(world.home() + "/Downloads");
    EXPECT_TRUE(
        world.logHolds("Volume : /Volumes/TavoJoin, isRemovable :1, isWritable : 1, isUnmountable : 1"));
    // A reboot removes it.
    writeFile(world.systemRoot() + "/Volumes.boot", "another");
    const Child plain(world.launch({}, world.home() + "/Downloads/Join.app"));
    EXPECT_TRUE(world.logs("Join main window has been shown"));
    EXPECT_TRUE(fs::is_empty(world.systemRoot() + "/Volumes"));
}

TEST_F(DeliveredCopy, OnAMountedVolumeLendsItsParameters) {
    world.deliverParametersTo(world.home() + "/delivery");
    const std::string image = world.home() + "/stick.img";
    Launch make = world.launch({});
    make.command = {"/usr/sbin/mke2fs", "-q", "-t", "ext4", "-d", world.home() + "/delivery", image, "4M"};
    ASSERT_EQ(statusOf(make), 0) << world.output();
    const std::string volume = world.home() + "/TavoJoin 7";
    fs::create_directory(volume);
    Launch mount = world.launch({});
    mount.command = {"mount", "-o", "loop,ro", image, volume};
    if (statusOf(mount) != 0)
        GTEST_SKIP() << "no loop device can be mounted here: " << world.output();
    const Mounted mounted{volume};
    JoinWorld::copyJoinTo(world.home() + "/Downloads");
    fs::create_directory_symlink(world.home(), world.home() + ".link");
    home += ".link/"; // the system reports mount points without links
    expectJoinFrom(world.home() + "/Downloads");
    EXPECT_TRUE(world.logHolds("Volume : " + volume + ", isRemovable :1, isWritable : 0, isUnmountable : 1"))
        << world.log();
}

} // namespace
} // namespace join::test
