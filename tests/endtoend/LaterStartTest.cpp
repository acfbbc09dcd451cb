#include "endtoend/JoinWorld.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <memory>
#include <sstream>

namespace join::test {
namespace {

constexpr auto received = "Received Launch App Url : ";

/// The launch URLs that were handled, in order.
std::vector<std::string> handledUrls(const JoinWorld& world) {
    std::vector<std::string> urls;
    std::istringstream log(world.log());
    for (std::string line; std::getline(log, line);)
        if (const auto at = line.find(received); at != std::string::npos)
            urls.push_back(line.substr(at + std::string_view(received).size()));
    return urls;
}

std::string keyless(int number) { return "tavojoin://e=person" + std::to_string(number) + "@example.org"; }

std::string keyed(const JoinWorld& world, int number) {
    return "tavojoin://k=" + std::to_string(123456780 + number) + "&wsn=" + world.host() + "&cav=1.4";
}

TEST(LaterStart, HandsItsUrlToTheFirstWithoutLoadingAToolkit) {
    const JoinWorld world;
    const Child first(world.launch({}));
    ASSERT_TRUE(world.logs("Launch app called : "));
    Launch second = world.launch({keyless(1)});
    second.environment.emplace_back("LD_DEBUG", "files");
    second.output = world.home() + "/second-output";
    EXPECT_EQ(statusOf(second), 0);
    EXPECT_TRUE(eventually([&] { return handledUrls(world) == std::vector{keyless(1)}; })) << world.log();
    const std::string loaded = contentsOf(second.output);
    EXPECT_NE(loaded.find("libstdc++"), std::string::npos) << loaded;
    EXPECT_EQ(loaded.find("libQt"), std::string::npos);
    EXPECT_EQ(statusOf(world.launch({})), 0); // asks for the window alone
    EXPECT_EQ(statusOf(world.launch({keyless(2)})), 0);
    EXPECT_TRUE(eventually([&] { return handledUrls(world) == std::vector{keyless(1), keyless(2)}; }));
    EXPECT_TRUE(isAlive(first.process()));
}

TEST(LaterStart, NeedNotWaitForAFirstWhoseMainThreadIsBlocked) {
    const JoinWorld world({"--update-needed", "false", "--delay", "3000"});
    world.installPrograms();
    Child first(world.launch({keyed(world, 0)}));
    ASSERT_TRUE(world.logs("[ApiHandler getInstance]"));
    EXPECT_EQ(statusOf(world.launch({keyless(1)})), 0);
    EXPECT_EQ(handledUrls(world).size(), 1U); // the request is still under way
    EXPECT_FALSE(world.logHolds("Session Validated"));
    EXPECT_EQ(world.commandLines().find("tavojoin:"), std::string::npos);
    EXPECT_EQ(first.wait(), 0);
    // The first one ends when its agent runs. The message that it had taken is not lost: the next Join gets
    // it.
    EXPECT_TRUE(eventually([&] { return handledUrls(world).size() == 2; })) << world.log();
    EXPECT_EQ(handledUrls(world).back(), keyless(1));
    ASSERT_TRUE(world.logs("Launch app called : 1"));
    EXPECT_NE(world.commandLines().find("Join"), std::string::npos);
    EXPECT_EQ(world.commandLines().find("tavojoin:"), std::string::npos);
    EXPECT_EQ(statusOf(world.launch({keyless(2)})), 0);
    EXPECT_TRUE(eventually([&] { return handledUrls(world).size() == 3; }));
}

TEST(LaterStart, OfFiftyInTheSameInstantOneRunsAndEachUrlIsHandled) {
    constexpr int count = 50;
    const JoinWorld world;
    std::vector<std::unique_ptr<Child>> starts;
    std::vector<std::string> expected;
    for (int i = 0; i < count; ++i) {
        starts.push_back(std::make_unique<Child>(world.launch({keyless(i)})));
        expected.push_back(keyless(i));
    }
    ASSERT_TRUE(eventually([&] { return handledUrls(world).size() == count; })) << world.log();
    std::vector<std::string> handled = handledUrls(world);
    std::ranges::sort(handled);
    std::ranges::sort(expected);
    EXPECT_EQ(handled, expected);
    const auto runs = [](const auto& start) { return isAlive(start->process()); };
    EXPECT_TRUE(eventually([&] { return std::ranges::count_if(starts, runs) == 1; }));
    for (const auto& start : starts)
        EXPECT_TRUE(runs(start) || start->wait() == 0);
}

TEST(LaterStart, UrlsThatEachJoinAreAllJoinedInTheirOrder) {
    constexpr int times = 5;
    const JoinWorld world({"--update-needed", "false", "--delay", "300"});
    world.installPrograms();
    std::vector<std::string> expected = {keyed(world, 0)};
    Child first(world.launch(expected));
    ASSERT_TRUE(eventually([&] { return !handledUrls(world).empty(); }));
    for (int i = 1; i < times; ++i) {
        expected.push_back(keyed(world, i));
        EXPECT_EQ(statusOf(world.launch({expected.back()})), 0);
    }
    EXPECT_EQ(first.wait(), 0);
    const std::string separator(133, '-');
    EXPECT_TRUE(eventually([&] { return count(world.log(), separator) == times; })) << world.log();
    EXPECT_EQ(handledUrls(world), expected);
}

TEST(LaterStart, TakesThePlaceOfAFirstThatWasKilledAndComplainsOfOneThatIsStopped) {
    const JoinWorld world;
    auto first = std::make_unique<Child>(world.launch({}));
    ASSERT_TRUE(world.logs("Launch app called : "));
    ::kill(first->process(), SIGSTOP);
    ASSERT_EQ(::waitpid(first->process(), nullptr, WUNTRACED), first->process()); // all of it
    EXPECT_EQ(statusOf(world.launch({keyless(1)})), 75);
    EXPECT_EQ(world.output(), "Join: a Join is running already and does not answer\n");
    ::kill(first->process(), SIGCONT);
    EXPECT_EQ(statusOf(world.launch({keyless(2)})), 0);
    EXPECT_TRUE(eventually([&] { return handledUrls(world) == std::vector{keyless(2)}; }));
    first.reset();
    const Child next(world.launch({keyless(3)}));
    EXPECT_TRUE(eventually([&] { return handledUrls(world).size() == 2; }));
    EXPECT_EQ(handledUrls(world).back(), keyless(3));
}

TEST(LaterStart, GetsAWindowOfItsOwnFromAFirstThatHasNone) {
    const JoinWorld world({"--update-needed", "false"});
    world.installPrograms();
    writeFile(world.support("Tavo.app/Contents/MacOS/Tavo"), "#!/bin/sh\n"); // ends at once
    Child first(world.launch({keyed(world, 0)}));
    ASSERT_TRUE(world.logs("Join app version check method called!!"));
    ASSERT_TRUE(isAlive(first.process())); // it waits for the agent, with its window closed
    EXPECT_EQ(statusOf(world.launch({})), 0);
    EXPECT_EQ(first.wait(), 0);
    EXPECT_TRUE(world.logs("Join main window has been shown"));
}

TEST(LaterStart, LetsAFirstWithoutAWindowGoOnWithItsDownload) {
    const JoinWorld world({"--update-needed", "false", "--image-fault", "stall", "--image-fail", "all",
                           "--agent-image", std::string(JOIN_IMAGES) + "/TavoMac.dmg"});
    world.installPrograms();
    fs::remove(world.support("TavoCrashDetector"));
    const Child first(world.launch({keyed(world, 0)}));
    ASSERT_TRUE(world.logs("[TavoDMGDownloader downloadDidBegin:]"));
    ASSERT_TRUE(world.logHolds("TavoJoinWindowHandler.closeWindow() called!"));
    EXPECT_EQ(statusOf(world.launch({})), 0);
    const Child third(world.launch({keyless(1)}));
    ASSERT_TRUE(eventually([&] { return handledUrls(world).size() == 2; })) << world.log();
    EXPECT_TRUE(isAlive(first.process()));
    EXPECT_FALSE(world.logHolds("a new Join takes over"));
}

TEST(LaterStart, IsAFirstOfItsOwnWhereThereIsNoPlaceToMeet) {
    const JoinWorld world;
    fs::create_directories(world.runtime() + "/tavojoin/instance.lock");
    fs::permissions(world.runtime() + "/tavojoin", fs::perms::owner_all);
    const Child join(world.launch({keyless(1)}));
    EXPECT_TRUE(eventually([&] { return handledUrls(world) == std::vector{keyless(1)}; }));
    EXPECT_NE(world.output().find("later starts will not find this one"), std::string::npos);
}

} // namespace
} // namespace join::test
