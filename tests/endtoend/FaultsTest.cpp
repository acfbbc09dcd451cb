#include "endtoend/JoinWorld.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <random>

// Each fault for a moment; scripts/faults goes further, and on for longer.
namespace join::test {
namespace {

namespace fs = std::filesystem;

/// The options of a service that delivers the images.
std::vector<std::string> delivering(const char* updateNeeded) {
    const std::string images = JOIN_IMAGES;
    return {"--agent-image",         images + "/TavoMac.dmg", "--join-image",
            images + "/JoinMac.dmg", "--update-needed",       updateNeeded};
}

std::string urlOf(const JoinWorld& world, const std::string& more = "") {
    return "tavojoin://k=123456789&wsn=" + world.host() + "&cav=1.4" + more;
}

std::string saidIn(const JoinWorld& world) { return world.log() + world.output(); }

/// Files that Join has not finished.
std::vector<std::string> unfinishedIn(const JoinWorld& world) {
    std::vector<std::string> left;
    for (const auto& entry : fs::recursive_directory_iterator(world.home()))
        if (const fs::path& path = entry.path();
            path.extension() == ".partial" || path.parent_path().filename() == "Volumes")
            left.push_back(path);
    return left;
}

/// Nothing is wrong from now on: this run ends with the agent started.
void expectJoin(const JoinWorld& world, const Launch& launch) {
    fs::remove(world.home() + "/tavo-standin/agent.txt");
    Child join(launch);
    ASSERT_EQ(join.wait(), 0) << saidIn(world);
    EXPECT_TRUE(eventually([&] { return world.agentStarts().ends_with("end\n"); })) << saidIn(world);
}

/// A kind of join: what exists before it, and how Join is started.
struct Road {
    std::string name;
    const char* updateNeeded;
    std::function<Launch(const JoinWorld&)> prepare;
};

Launch fromInstalledCopy(const JoinWorld& world, const std::string& more) {
    world.installPrograms();
    return world.launch({urlOf(world, more)}, world.systemRoot() + "/Applications/Join.app");
}

Launch fromDeliveredCopy(const JoinWorld& world) {
    const std::string folder = world.home() + "/Downloads";
    JoinWorld::copyJoinTo(folder);
    writeFile(folder + "/.joinparameters",
              "TAVO_MEETING_IND\n&key=123456789&firstTime=true&crashDetectorAppVersion=1.4&webServerName=" +
                  world.host() + "&");
    return world.launch({}, folder + "/Join.app");
}

class Killed : public testing::TestWithParam<Road> {};

TEST_P(Killed, AtAnyMomentTheNextRunJoins) {
    std::mt19937 random(std::random_device{}());
    std::uniform_int_distribution<int> moments(0, 400'000);
    const char* given = std::getenv("JOIN_KILLS");
    for (int time = 0; time < (given ? std::atoi(given) : 3); ++time) {
        const JoinWorld world(delivering(GetParam().updateNeeded));
        Launch start = GetParam().prepare(world);
        const std::chrono::microseconds moment(moments(random));
        {
            const Child join(start);
            std::this_thread::sleep_for(moment); // the fault itself: a kill at this moment
        }
        if (!fs::exists(start.command.front())) // an update had removed it
            start.command.front() = world.launch({}).command.front();
        SCOPED_TRACE("killed after " + std::to_string(moment.count()) + " µs");
        ASSERT_NO_FATAL_FAILURE(expectJoin(world, start));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Faults, Killed,
    testing::Values(
        Road{"Update", "true", [](const JoinWorld& world) { return fromInstalledCopy(world, "&jav=99.0"); }},
        Road{"DeliveredCopy", "true", fromDeliveredCopy},
        Road{"InstalledAgent", "false", [](const JoinWorld& world) { return fromInstalledCopy(world, ""); }}),
    [](const auto& info) { return info.param.name; });

/// A small disk for the world's home folder.
class Disk {
public:
    Disk(const JoinWorld& world, const std::string& limits)
        : folder_(world.home()), isThere_(mount(limits)) {}
    ~Disk() { Child({.command = {"umount", "--lazy", folder_}}).wait(); }
    Disk(const Disk&) = delete;
    Disk& operator=(const Disk&) = delete;

    bool isThere() const { return isThere_; }
    void makeRoom() const { EXPECT_TRUE(mount("remount,size=1g,nr_inodes=100000")); }

private:
    bool mount(const std::string& options) const {
        return Child({.command = {"mount", "-t", "tmpfs", "-o", options, "tmpfs", folder_}}).wait() == 0;
    }

    std::string folder_;
    bool isThere_;
};

TEST(Faults, AFullDiskIsSaidAndTheNextRunJoinsWhenThereIsRoom) {
    for (const char* limits : {"size=8k", "size=256k", "size=512k,nr_inodes=12", "size=512k,nr_inodes=30"}) {
        const JoinWorld world(delivering("true"));
        const Disk disk(world, limits);
        if (!disk.isThere())
            GTEST_SKIP() << "only root can mount a small disk";
        {
            const Child join(world.launch({urlOf(world)}));
            EXPECT_TRUE(eventually([&] {
                return world.requests().find("send_log_mail 200") != std::string::npos;
            })) << limits
                << saidIn(world);
            EXPECT_TRUE(isAlive(join.process())) << limits;
        }
        EXPECT_NE(saidIn(world).find("Download failed! Error"), std::string::npos) << limits << saidIn(world);
        EXPECT_EQ(unfinishedIn(world), std::vector<std::string>()) << limits;
        disk.makeRoom();
        ASSERT_NO_FATAL_FAILURE(expectJoin(world, world.launch({urlOf(world)})));
        EXPECT_EQ(unfinishedIn(world), std::vector<std::string>()) << limits;
        world.endAll();
    }
}

TEST(Faults, AFolderThatCannotBeWrittenIsSaidAndTheNextRunJoinsWhenItCan) {
    const std::string support = "Library/Application Support/TavoMeetingNative";
    const std::pair<std::string, const char*> cases[] = {
        {"", "/Library cannot be made : Permission denied"},
        {"Library/Logs/TavoFendel/Join", "Agent invoked successfully"}, // on standard error then
        {support, "Unable to create tavojoindetails.conf file"},
        {".local/share/tavojoin/root", "the folder of the volumes cannot be made: Permission denied"},
        {".local/share/tavojoin/root/Volumes", "the volume cannot be shown: Permission denied"},
    };
    for (const auto& [folder, said] : cases) {
        const JoinWorld world(delivering("true"));
        const std::string path = world.home() + "/" + folder;
        fs::create_directories(path);
        if (folder == support)
            writeFile(path + "/tavojoindetails.conf", "of the session before");
        const Launch launch = world.launch({urlOf(world)});
        Launch bound = launch; // by modes, which root is not
        if (::geteuid() == 0)
            bound.command.insert(bound.command.begin(),
                                 {"setpriv", "--bounding-set=-all", "--inh-caps=-all"});
        fs::permissions(path, fs::perms{0555});
        {
            const Child join(bound);
            EXPECT_TRUE(eventually([&, text = said] {
                return saidIn(world).find(text) != std::string::npos;
            })) << folder
                << saidIn(world);
        }
        fs::permissions(path, fs::perms{0755});
        ASSERT_NO_FATAL_FAILURE(expectJoin(world, launch));
        EXPECT_EQ(unfinishedIn(world), std::vector<std::string>()) << folder;
    }
}

TEST(Faults, ManyUrlsLeaveNothingBehindInTheRunningJoin) {
    const JoinWorld world;
    const Child first(world.launch({}));
    ASSERT_TRUE(eventually([&] { return world.logHolds("Launch app called"); }));
    const auto openUrls = [&](const std::string& last) {
        for (int time = 0; time < 20; ++time)
            ASSERT_EQ(Child(world.launch({"tavojoin://e=ann@example.org"})).wait(), 0);
        ASSERT_EQ(Child(world.launch({last})).wait(), 0);
        ASSERT_TRUE(eventually([&] { return world.logHolds("Received Launch App Url : " + last); }));
    };
    const auto holdings = [&](const char* kind) {
        const std::string folder = "/proc/" + std::to_string(first.process()) + "/" + kind;
        return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
    };
    openUrls("tavojoin://e=warm");
    const auto descriptors = holdings("fd");
    const auto threads = holdings("task");
    openUrls("tavojoin://e=last");
    EXPECT_TRUE(eventually([&] { return holdings("fd") <= descriptors; })) << holdings("fd") << descriptors;
    EXPECT_LE(holdings("task"), threads);
}

} // namespace
} // namespace join::test
