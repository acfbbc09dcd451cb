#include "endtoend/JoinWorld.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <list>
#include <optional>
#include <sstream>

namespace join::test {
namespace {

/// The launch URLs that were handled, in order.
std::vector<std::string> handledUrls(const JoinWorld& world) {
    constexpr std::string_view received = "Received Launch App Url : ";
    std::vector<std::string> urls;
    std::istringstream log(world.log());
    for (std::string line; std::getline(log, line);)
        if (const auto at = line.find(received); at != std::string::npos)
            urls.push_back(line.substr(at + received.size()));
    return urls;
}

/// Whether these URLs come to have been handled.
testing::AssertionResult handles(const JoinWorld& world, const std::vector<std::string>& urls) {
    return testing::AssertionResult(eventually([&] { return handledUrls(world) == urls; })) << world.log();
}

std::string keyless(int number) { return "tavojoin://e=person" + std::to_string(number) + "@example.org"; }

TEST(LaterStart, HandsItsUrlToTheFirstWithoutLoadingAToolkit) {
    const JoinWorld world;
    const Child first(world.launch({}));
    ASSERT_TRUE(world.logs("Launch app called : "));
    const std::string maps = contentsOf("/proc/" + std::to_string(first.process()) + "/maps");
    EXPECT_EQ(maps.find("libcurl"), std::string::npos); // it waits for a key, and asks nobody
    Launch second = world.launch({keyless(1)});
    second.environment.emplace_back("LD_DEBUG", "files");
    second.output = world.home() + "/second-output";
    EXPECT_EQ(statusOf(second), 0);
    EXPECT_TRUE(handles(world, {keyless(1)}));
    const std::string loaded = contentsOf(second.output);
    EXPECT_NE(loaded.find("libstdc++"), std::string::npos) << loaded;
    EXPECT_EQ(loaded.find("libQt"), std::string::npos);
    EXPECT_EQ(statusOf(world.launch({})), 0); // asks for the window alone
    EXPECT_EQ(statusOf(world.launch({keyless(2)})), 0);
    EXPECT_TRUE(handles(world, {keyless(1), keyless(2)}));
    EXPECT_TRUE(isAlive(first.process()));
}

TEST(LaterStart, NeedNotWaitForAFirstWhoseMainThreadIsBlocked) {
    const JoinWorld world({"--update-needed", "false", "--delay", "3000"});
    world.installPrograms();
    Child first(world.launch({world.url()}));
    ASSERT_TRUE(world.logs("[ApiHandler getInstance]"));
    for (const int number : {1, 2})
        EXPECT_EQ(statusOf(world.launch({keyless(number)})), 0);
    EXPECT_EQ(handledUrls(world).size(), 1U); // the request is still under way
    EXPECT_FALSE(world.logHolds("Session Validated"));
    EXPECT_EQ(world.commandLines().find("tavojoin:"), std::string::npos);
    EXPECT_EQ(first.wait(), 0);
    // The first one ends when its agent runs. The messages that it had taken are not lost.
    EXPECT_TRUE(handles(world, {world.url(), keyless(1), keyless(2)}));
    EXPECT_NE(world.commandLines().find("Join"), std::string::npos);
    EXPECT_EQ(world.commandLines().find("tavojoin:"), std::string::npos);
    EXPECT_EQ(statusOf(world.launch({keyless(3)})), 0);
    EXPECT_TRUE(handles(world, {world.url(), keyless(1), keyless(2), keyless(3)}));
}

TEST(LaterStart, OfFiftyInTheSameInstantOneRunsAndEachUrlIsHandled) {
    const JoinWorld world;
    std::list<Child> starts;
    std::vector<std::string> urls;
    for (int i = 0; i < 50; ++i)
        starts.emplace_back(world.launch({urls.emplace_back(keyless(i))}));
    ASSERT_TRUE(eventually([&] { return std::ranges::is_permutation(handledUrls(world), urls); }))
        << world.log();
    const auto runs = [](const Child& start) { return isAlive(start.process()); };
    EXPECT_TRUE(eventually([&] { return std::ranges::count_if(starts, runs) == 1; }));
    for (Child& start : starts)
        EXPECT_TRUE(runs(start) || start.wait() == 0);
}

TEST(LaterStart, TakesThePlaceOfAFirstThatWasKilledAndComplainsOfOneThatIsStopped) {
    const JoinWorld world;
    std::optional<Child> first(world.launch({}));
    ASSERT_TRUE(world.logs("Launch app called : "));
    ::kill(first->process(), SIGSTOP);
    ASSERT_EQ(::waitpid(first->process(), nullptr, WUNTRACED), first->process()); // all of it
    EXPECT_EQ(statusOf(world.launch({keyless(1)})), 75);
    EXPECT_EQ(world.output(), "Join: a Join is running already and does not answer\n");
    ::kill(first->process(), SIGCONT);
    EXPECT_EQ(statusOf(world.launch({keyless(2)})), 0);
    EXPECT_TRUE(handles(world, {keyless(2)}));
    first.reset();
    const Child next(world.launch({keyless(3)}));
    EXPECT_TRUE(handles(world, {keyless(2), keyless(3)}));
}

TEST(LaterStart, GetsAWindowOfItsOwnFromAFirstThatHasNone) {
    const JoinWorld world({"--update-needed", "false"});
    world.installPrograms();
    writeFile(world.support("Tavo.app/Contents/MacOS/Tavo"), "#!/missing\n"); // it cannot be started
    Child first(world.launch({world.url()}));
    ASSERT_TRUE(world.logs("Join app version check method called!!"));
    EXPECT_EQ(statusOf(world.launch({})), 0);
    EXPECT_EQ(first.wait(), 0);
    EXPECT_TRUE(world.logs("Join main window has been shown"));
}

TEST(LaterStart, LetsAFirstWithoutAWindowGoOnWithItsDownload) {
    const JoinWorld world(
        delivering({"--update-needed", "false", "--image-fault", "stall", "--image-fail", "all"}));
    world.installPrograms();
    fs::remove(world.support("TavoCrashDetector"));
    const Child first(world.launch({world.url()}));
    ASSERT_TRUE(world.logs("[TavoDMGDownloader downloadDidBegin:]"));
    ASSERT_TRUE(world.logHolds("TavoJoinWindowHandler.closeWindow() called!"));
    EXPECT_EQ(statusOf(world.launch({})), 0);
    const Child third(world.launch({keyless(1)}));
    EXPECT_TRUE(handles(world, {world.url(), keyless(1)}));
    EXPECT_TRUE(isAlive(first.process()));
    EXPECT_FALSE(world.logHolds("a new Join takes over"));
}

TEST(LaterStart, IsAFirstOfItsOwnWhereThereIsNoPlaceToMeet) {
    const JoinWorld world;
    fs::create_directories(world.runtime() + "/tavojoin/instance.lock");
    fs::permissions(world.runtime() + "/tavojoin", fs::perms::owner_all);
    const Child join(world.launch({keyless(1)}));
    EXPECT_TRUE(handles(world, {keyless(1)}));
    EXPECT_NE(world.output().find("later starts will not find this one"), std::string::npos);
}

} // namespace
} // namespace join::test
