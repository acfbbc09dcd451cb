#include "endtoend/JoinWorld.h"
#include "images/DiskImage.h"

#include <gtest/gtest.h>

namespace join::test {
namespace {

namespace fs = std::filesystem;

/// The parameters of a first run, as the service delivers them beside a Join.
class DeliveredCopy : public testing::Test {
protected:
    void deliverParametersIn(const std::string& folder) const {
        writeFile(folder + "/.joinparameters",
                  "TAVO_MEETING_IND\n&key=1234567890&email=ann@example.org&firstTime=true"
                  "&crashDetectorAppVersion=1.4&webServerName=" +
                      world.host() + "&");
    }

    /// Joins with the copy in that folder, and expects it to use the delivered parameters.
    void expectJoinFrom(const std::string& folder) const {
        Launch launch = world.launch({}, folder + "/Join.app");
        launch.environment.emplace_back("HOME", home);
        Child join(launch);
        EXPECT_EQ(join.wait(), 0) << world.log();
        EXPECT_TRUE(eventually([&] { return world.agentStarts().ends_with("end\n"); })) << world.log();
        EXPECT_NE(contentsOf(world.support("joinparameters.conf")).find("&email=ann@example.org&"),
                  std::string::npos);
        EXPECT_EQ(::access((world.systemRoot() + "/Applications/Join.app/Contents/MacOS/Join").c_str(), X_OK),
                  0);
    }

    JoinWorld world{{"--update-needed", "false"}};
    std::string home = world.home(); ///< or another path to it
};

/// Unmounts a volume at the end.
struct Mounted {
    std::string volume;
    ~Mounted() { Child({.command = {"umount", "--lazy", volume}}).wait(); }
};

TEST_F(DeliveredCopy, OnAVolumeThatTheHelperHasLaidOutJoins) {
    world.installPrograms();
    JoinWorld::copyJoinTo(world.home() + "/delivery");
    deliverParametersIn(world.home() + "/delivery");
    const std::string image = world.home() + "/TavoJoin.dmg";
    tools::makeDiskImage(world.home() + "/delivery", "TavoJoin", tools::ImageKind::udifZlib, image);
    fs::remove_all(world.home() + "/delivery");
    Launch mount = world.launch({"mount", image});
    mount.command.front() = std::string(JOIN_BUNDLE) + "/Contents/Helpers/hdiutil";
    ASSERT_EQ(Child(mount).wait(), 0) << world.output();
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
    EXPECT_TRUE(eventually([&] { return world.logHolds("Join main window has been shown"); })) << world.log();
    EXPECT_TRUE(fs::is_empty(world.systemRoot() + "/Volumes"));
}

TEST_F(DeliveredCopy, OnAMountedVolumeLendsItsParameters) {
    world.installPrograms();
    deliverParametersIn(world.home() + "/delivery");
    const std::string image = world.home() + "/stick.img";
    Launch make = world.launch({});
    make.command = {"/usr/sbin/mke2fs", "-q", "-t", "ext4", "-d", world.home() + "/delivery", image, "4M"};
    ASSERT_EQ(Child(make).wait(), 0) << world.output();
    const std::string volume = world.home() + "/TavoJoin 7";
    fs::create_directory(volume);
    Launch mount = world.launch({});
    mount.command = {"mount", "-o", "loop,ro", image, volume};
    if (Child(mount).wait() != 0)
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
