#include "endtoend/JoinWorld.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <random>

// Each fault for a moment; scripts/faults goes further, and on for longer.
namespace join::test {
namespace {

using namespace std::chrono_literals;

std::string saidIn(const JoinWorld& world) { return world.log() + world.output(); }

/// Nothing is wrong from now on: this run ends with the agent started.
void expectJoin(const JoinWorld& world, const Launch& launch) {
    fs::remove(world.home() + "/tavo-standin/agent.txt");
    ASSERT_EQ(statusOf(launch), 0) << saidIn(world);
    EXPECT_TRUE(world.agentRuns());
}

Launch fromInstalledCopy(const JoinWorld& world, const std::string& more) {
    world.installPrograms();
    return world.launch({world.url(more)}, world.systemRoot() + "/Applications/Join.app");
}

Launch fromDeliveredCopy(const JoinWorld& world) {
    const std::string folder = world.home() + "/Downloads";
    JoinWorld::copyJoinTo(folder);
    world.deliverParametersTo(folder);
    return world.launch({}, folder + "/Join.app");
}

TEST(Killed, AtAnyMomentTheNextRunJoins) {
    using namespace std::chrono;
    const struct {
        const char* name; ///< of a kind of join
        const char* updateNeeded;
        std::function<Launch(const JoinWorld&)> prepare; ///< makes what exists before it
    } joins[] = {
        {"bare computer", "true", [](const auto& world) { return world.launch({world.url()}); }},
        {"update", "true", [](const auto& world) { return fromInstalledCopy(world, "&cav=1.4&jav=99.0"); }},
        {"delivered copy", "true", fromDeliveredCopy},
        {"installed agent", "false", [](const auto& world) { return fromInstalledCopy(world, "&cav=1.4"); }}};
    std::mt19937 random(std::random_device{}());
    const char* given = std::getenv("JOIN_KILLS");
    for (const auto& [name, updateNeeded, prepare] : joins) {
        microseconds whole = 1s; // the longest join so far
        for (int time = 0; time < (given ? std::atoi(given) : 10); ++time) {
            const JoinWorld world(delivering({"--update-needed", updateNeeded}));
            Launch start = prepare(world);
            const microseconds moment(std::uniform_int_distribution<std::int64_t>(0, whole.count())(random));
            {
                const Child join(start);
                std::this_thread::sleep_for(moment); // the fault itself: a kill at this moment
            }
            if (!fs::exists(start.command.front())) // an update had removed it
                start.command.front() = world.launch({}).command.front();
            SCOPED_TRACE(name + (" killed after " + std::to_string(moment.count())) + " µs");
            const auto begin = steady_clock::now();
            ASSERT_NO_FATAL_FAILURE(expectJoin(world, start));
            whole = std::max(whole, duration_cast<microseconds>(steady_clock::now() - begin));
            expectWholeAgent(world);
        }
    }
}

/// Mounts a small disk as the world's home folder, or changes its size.
bool mountDisk(const JoinWorld& world, const std::string& options) {
    return statusOf({.command = {"mount", "-t", "tmpfs", "-o", options, "tmpfs", world.home()}}) == 0;
}

TEST(Faults, AFullDiskIsSaidAndTheNextRunJoinsWhenThereIsRoom) {
    for (const char* limits : {"size=8k", "size=256k", "size=512k,nr_inodes=12", "size=512k,nr_inodes=30"}) {
        const JoinWorld world(delivering());
        const Mounted disk{world.home()};
        if (!mountDisk(world, limits))
            GTEST_SKIP() << "only root can mount a small disk";
        {
            const Child join(world.launch({world.url()}));
            EXPECT_TRUE(eventually([&] { return count(world.requests(), "send_log_mail 200") > 0; }))
                << limits << saidIn(world);
            EXPECT_TRUE(isAlive(join.process())) << limits;
        }
        EXPECT_NE(saidIn(world).find("Download failed! Error"), std::string::npos) << limits << saidIn(world);
        EXPECT_EQ(leftIn(world), std::vector<std::string>()) << limits;
        EXPECT_TRUE(mountDisk(world, "remount,size=1g,nr_inodes=100000"));
        ASSERT_NO_FATAL_FAILURE(expectJoin(world, world.launch({world.url()})));
        EXPECT_EQ(leftIn(world), std::vector<std::string>()) << limits;
        world.endAll();
    }
}

TEST(Faults, AFolderThatCannotBeWrittenIsSaidAndTheNextRunJoinsWhenItCan) {
    const std::pair<std::string, const char*> cases[] = {
        {"", "/Library cannot be made : Permission denied"},
        {".local/share/tavojoin/root", "the folder of the volumes cannot be made: Permission denied"},
        {".local/share/tavojoin/root/Volumes", "the volume cannot be shown: Permission denied"},
    };
    for (const auto& [folder, said] : cases) {
        const JoinWorld world(delivering());
        const std::string path = world.home() + "/" + folder;
        fs::create_directories(path);
        const Launch launch = world.launch({world.url()});
        Launch bound = launch; // by modes, which root is not
        if (::geteuid() == 0)
            bound.command.insert(bound.command.begin(),
                                 {"setpriv", "--bounding-set=-all", "--inh-caps=-all"});
        fs::permissions(path, fs::perms{0555});
        {
            const Child join(bound);
            EXPECT_TRUE(eventually([&, text = said] { return count(saidIn(world), text) > 0; }))
                << folder << saidIn(world);
        }
        fs::permissions(path, fs::perms{0755});
        ASSERT_NO_FATAL_FAILURE(expectJoin(world, launch));
        fs::remove(world.support("JoinMac.dmg")); // whole, of the run that has just been killed
        EXPECT_EQ(leftIn(world), std::vector<std::string>()) << folder;
    }
}

TEST(Faults, ManyUrlsLeaveNothingBehindInTheRunningJoin) {
    const JoinWorld world;
    const Child first(world.launch({}));
    ASSERT_TRUE(world.logs("Launch app called"));
    const auto openUrls = [&](const std::string& last) {
        for (int time = 0; time < 20; ++time)
            ASSERT_EQ(statusOf(world.launch({"tavojoin://e=ann@example.org"})), 0);
        ASSERT_EQ(statusOf(world.launch({last})), 0);
        ASSERT_TRUE(world.logs("Received Launch App Url : " + last));
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
