#include "endtoend/JoinWorld.h"
#include "images/HostileImage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace join::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

/// The options of a service that delivers the images.
std::vector<std::string> delivering(std::vector<std::string> more = {}) {
    more.insert(more.end(), {"--agent-image", std::string(JOIN_IMAGES) + "/TavoMac.dmg", "--join-image",
                             std::string(JOIN_IMAGES) + "/JoinMac.dmg"});
    return more;
}

std::string urlOf(const JoinWorld& world, const std::string& more = "&cav=1.4") {
    return "tavojoin://k=123456789&e=ann@example.org&wsn=" + world.host() + more;
}

long count(const std::string& text, const std::string& piece) {
    long found = 0;
    for (std::size_t at = 0; (at = text.find(piece, at)) != std::string::npos; at += piece.size())
        ++found;
    return found;
}

bool isEmpty(const fs::path& folder) { return !fs::exists(folder) || fs::is_empty(folder); }

/// Nothing is left that an installation needed only on the way.
void expectTidy(const JoinWorld& world) {
    EXPECT_TRUE(isEmpty(world.systemRoot() + "/Volumes"));
    std::vector<std::string> left;
    for (const std::string& folder : {world.support(""), world.systemRoot() + "/Applications"})
        for (const auto& entry : fs::directory_iterator(folder))
            if (const std::string name = entry.path().filename();
                name.starts_with('.') || name.ends_with(".dmg"))
                left.push_back(name);
    EXPECT_EQ(left, std::vector<std::string>{});
}

/// The content of a tree: each entry's path with its mode and its bytes, or the text of a link.
std::vector<std::string> treeOf(const fs::path& tree) {
    std::vector<std::string> entries;
    for (const auto& entry : fs::recursive_directory_iterator(tree)) {
        const std::string place = entry.path().lexically_relative(tree);
        const auto mode = " " + std::to_string(static_cast<int>(entry.symlink_status().permissions()));
        if (entry.is_symlink())
            entries.push_back(place + " -> " + fs::read_symlink(entry.path()).string());
        else
            entries.push_back(place + mode + (entry.is_regular_file() ? contentsOf(entry.path()) : ""));
    }
    std::ranges::sort(entries);
    return entries;
}

void expectWholeAgent(const JoinWorld& world) {
    const TemporaryFolder original;
    tools::makeAgentBundle(original / "Tavo.app", tools::defaultAgentVersion);
    EXPECT_EQ(treeOf(world.support("Tavo.app")), treeOf(original / "Tavo.app"));
    EXPECT_EQ(contentsOf(world.support("TavoCrashDetector")),
              tools::crashDetectorBytes(tools::defaultCrashDetectorVersion));
}

TEST(Install, ABareComputerJoinsAndTheNextRunOnlyStartsThePrograms) {
    const JoinWorld world(delivering());
    fs::create_directories(world.home() + "/Applications");
    Child join(world.launch({urlOf(world)}));
    ASSERT_EQ(join.wait(), 0) << world.log();

    EXPECT_EQ(count(world.requests(), "GET /join-session?key=123456789&role=agent&email=ann@example.org 200"),
              1);
    EXPECT_EQ(count(world.requests(), "GET /agent/TavoMac.dmg 200"), 1);
    EXPECT_TRUE(eventually([&] { return world.agentStarts().ends_with("end\n"); }));
    EXPECT_NE(world.agentStarts().find("\"M3\":\"Agent downloaded time : "), std::string::npos);
    EXPECT_NE(world.agentStarts().find(" | Server : " + world.host()), std::string::npos);
    EXPECT_EQ(world.crashDetectorStarts(), "");
    for (const std::string& folder : {world.systemRoot(), world.home()})
        EXPECT_EQ(::access((folder + "/Applications/Join.app/Contents/MacOS/Join").c_str(), X_OK), 0)
            << folder;
    expectWholeAgent(world);
    expectTidy(world);

    Child again(world.launch({urlOf(world)}, world.systemRoot() + "/Applications/Join.app"));
    EXPECT_EQ(again.wait(), 0) << world.log();
    EXPECT_TRUE(eventually([&] { return world.crashDetectorStarts().ends_with("end\n"); }));
    EXPECT_EQ(count(world.agentStarts(), "start\n"), 2);
    EXPECT_EQ(count(world.requests(), ".dmg") + count(world.requests(), "/join-session"), 2);
}

TEST(Install, JoinLivesInAnyHomeAndNeverRemovesTheCopyThatRuns) {
    const std::string odd = "caf\xE9"; // not UTF-8
    const struct {
        std::string home; ///< how $HOME is spelled; the folder is the odd one
        const char*
            ofUsers; ///< where the Applications folder that is the user's leads; the system's elsewhere
    } cases[] = {{"home/", "users"}, {odd, "users"}, {odd + "/", "system"}};
    for (const auto& [home, ofUsers] : cases) {
        const JoinWorld world(delivering());
        const fs::path folder = fs::path(world.home()).parent_path();
        fs::rename(world.home(), folder / odd);
        fs::create_directory_symlink(odd, world.home());
        const std::pair<std::string, std::string> applications[] = {
            {world.systemRoot() + "/Applications", "system"}, {world.home() + "/Applications", ofUsers}};
        for (const auto& [path, target] : applications) {
            fs::create_directories(folder / target);
            fs::create_directories(fs::path(path).parent_path());
            fs::create_directory_symlink(folder / target, path);
        }
        const auto start = [&, home = home](std::vector<std::string> arguments, const std::string& bundle) {
            Launch launch = world.launch(std::move(arguments), bundle);
            launch.environment.insert(launch.environment.end(),
                                      {{"HOME", folder / home}, {"XDG_DATA_HOME", ""}});
            return launch;
        };
        Child join(start({urlOf(world)}, JOIN_BUNDLE));
        ASSERT_EQ(join.wait(), 0) << home << world.log() << world.output();
        EXPECT_TRUE(eventually([&] { return world.agentStarts().ends_with("end\n"); })) << home;
        expectTidy(world);
        for (long times = 0; const auto& [path, target] : applications) {
            const std::string program = path + "/Join.app/Contents/MacOS/Join";
            struct stat before {};
            struct stat after {};
            ASSERT_EQ(::stat(program.c_str(), &before), 0) << program;
            const Child plain(start({}, path + "/Join.app"));
            ++times;
            EXPECT_TRUE(eventually([&] { return count(world.log(), "window has been shown") == times; }));
            EXPECT_EQ(::stat(program.c_str(), &after), 0) << home << ' ' << program;
            EXPECT_EQ(after.st_ino, before.st_ino) << home << ' ' << program;
        }
    }
}

TEST(Install, TheCrashDetectorAloneIsFetchedWhenItIsMissingOrAnotherVersionIsAnnounced) {
    const struct {
        std::string installed; ///< its version; none when empty
        std::string announced;
    } cases[] = {{"", "&cav=1.4"}, {"1.3", "&cav=1.4"}, {"1.4", ""}};
    for (const auto& [installed, announced] : cases) {
        const JoinWorld world(delivering({"--cdn-link", "self"}));
        world.installPrograms();
        fs::remove(world.support("TavoCrashDetector"));
        if (!installed.empty())
            tools::makeCrashDetector(world.support("TavoCrashDetector"), installed);
        Child join(world.launch({urlOf(world, announced)}));
        ASSERT_EQ(join.wait(), 0) << world.log();
        EXPECT_EQ(count(world.requests(), "GET /TavoMac.dmg 200"), 1)
            << world.requests(); // from the delivery host
        EXPECT_EQ(contentsOf(world.support("TavoCrashDetector")), tools::crashDetectorBytes("1.4"));
        EXPECT_FALSE(world.logHolds("Tavo.app file copied"));
        expectTidy(world);
    }
}

TEST(Install, AnOutdatedJoinUpdatesItselfWhereverItRunsFrom) {
    for (const char* place : {"elsewhere", "the system's Applications", "the user's Applications"}) {
        const JoinWorld world(delivering());
        world.installPrograms();
        const std::string system = world.systemRoot() + "/Applications";
        const std::string home = world.home() + "/Applications";
        JoinWorld::copyJoinTo(home);
        JoinWorld::copyJoinTo(world.home() + "/Downloads");
        const std::string from = place == std::string("elsewhere") ? world.home() + "/Downloads"
                                 : place[4] == 's'                 ? system
                                                                   : home;
        Child join(world.launch({urlOf(world, "&jav=99.0&cav=1.4")}, from + "/Join.app"));
        ASSERT_EQ(join.wait(), 0) << place << world.log();
        EXPECT_TRUE(eventually([&] { return world.crashDetectorStarts().ends_with("end\n"); })) << place;
        EXPECT_TRUE(world.logHolds("JoinMac.dmg mount task termination status : 0")) << place;
        if (from !=
            world.home() + "/Downloads") { // else its own copies came first, as they do at every start
            EXPECT_NE(contentsOf(system + "/Join.app/Contents/Info.plist").find("99.0"), std::string::npos)
                << place;
            EXPECT_NE(contentsOf(home + "/Join.app/Contents/Info.plist").find("99.0"), std::string::npos)
                << place;
        }
        expectTidy(world);
    }
}

TEST(Install, AFailedDownloadOfJoinLeavesTheWindowOpen) {
    const JoinWorld world(delivering({"--image-fail", "all"}));
    const Child join(world.launch({urlOf(world)}));
    EXPECT_TRUE(eventually([&] { return world.logHolds("JoinMac.dmg Download failed! Error - "); }));
    EXPECT_TRUE(eventually([&] { return world.logHolds("Log File sent succesfully!"); }));
    EXPECT_EQ(world.agentStarts(), "");
    expectTidy(world);
}

struct FailingDownloads {
    std::string name;
    std::string failures;
    std::string fault;
    long fromDeliveryHost; ///< requests of the content-delivery host, then of the web server
    long fromWebServer;
};

/// The upload that the service has stored holds the log with the failure in it.
void expectLogs(const std::string& folder, const std::string& comment) {
    const std::string form = contentsOf(folder + "/1.txt");
    EXPECT_NE(form.find("key=123456789\n"), std::string::npos) << form;
    EXPECT_NE(form.find("comment=" + comment + "\n"), std::string::npos) << form;
    Child unzip({.command = {"cmake", "-E", "tar", "xf", "1.zip"}, .directory = folder});
    EXPECT_EQ(unzip.wait(), 0);
    EXPECT_EQ(count(contentsOf(folder + "/Join/join.log"), "Download failed! Error - "), 7);
}

class AgentDownload : public testing::TestWithParam<FailingDownloads> {};

TEST_P(AgentDownload, IsTriedSevenTimesInAll) {
    const auto& [name, failures, fault, fromDeliveryHost, fromWebServer] = GetParam();
    const TemporaryFolder mail;
    const JoinWorld world(delivering({"--update-needed", "true", "--cdn-link", "self", "--image-fail",
                                      failures, "--image-fault", fault, "--log-mail-folder", mail.path()}));
    JoinWorld::copyJoinTo(world.systemRoot() + "/Applications");
    Child join(world.launch({urlOf(world)}));
    const bool succeeds = failures != "7";
    const std::string end = succeeds ? "Agent invoked successfully" : "Log File sent succesfully!";
    EXPECT_TRUE(eventually([&] { return world.logHolds(end); }, 60s)) << world.log();
    EXPECT_EQ(count(world.requests(), "GET /TavoMac.dmg "), fromDeliveryHost) << world.requests();
    EXPECT_EQ(count(world.requests(), "GET /agent/TavoMac.dmg "), fromWebServer) << world.requests();
    EXPECT_EQ(count(world.log(), "Retrying dmg download! COUNT : "), fromDeliveryHost + fromWebServer - 1);
    if (succeeds) {
        EXPECT_EQ(join.wait(), 0);
    } else {
        expectLogs(mail.path(), "Join App faild to download TavoMac.dmg");
    }
    expectTidy(world);
}

INSTANTIATE_TEST_SUITE_P(Install, AgentDownload,
                         testing::Values(FailingDownloads{"OneFailure", "1", "cut", 2, 0},
                                         FailingDownloads{"FourFailures", "4", "status", 4, 1},
                                         FailingDownloads{"SevenFailures", "7", "redirect", 4, 3}),
                         [](const auto& info) { return info.param.name; });

TEST(Install, NothingOfARefusedImageIsStartedOrInstalled) {
    const TemporaryFolder folder;
    const std::string good = contentsOf(std::string(JOIN_IMAGES) + "/TavoMac.dmg");
    for (const std::string& bytes :
         {tools::htmlPage(), tools::cutInTheMiddle(good), tools::withFlippedByte(good, good.size() / 3),
          tools::withTrailerPointingOutside(good)}) {
        writeFile(folder / "image", bytes);
        const JoinWorld world({"--update-needed", "true", "--agent-image", folder / "image"});
        JoinWorld::copyJoinTo(world.systemRoot() + "/Applications");
        const Child join(world.launch({urlOf(world)}));
        EXPECT_TRUE(eventually([&] { return world.logHolds("dmg mount task termination status : "); }))
            << world.log();
        EXPECT_TRUE(eventually([&] { return world.logHolds("Cannot launch"); })) << world.log();
        EXPECT_FALSE(world.logHolds("dmg mount task termination status : 0")) << world.log();
        EXPECT_EQ(world.agentStarts(), "");
        EXPECT_FALSE(fs::exists(world.support("Tavo.app")));
        EXPECT_TRUE(isEmpty(world.systemRoot() + "/Volumes"));
    }
}

/// How many kills to try; JOIN_KILLS in the environment overrides it.
int kills() {
    const char* given = std::getenv("JOIN_KILLS");
    return given ? std::atoi(given) : 10;
}

TEST(Install, KilledAtAnyMomentTheNextRunJoins) {
    std::mt19937 random(std::random_device{}());
    std::chrono::milliseconds whole{1000};
    for (int time = 0; time < kills(); ++time) {
        const JoinWorld world(delivering());
        const std::chrono::microseconds moment(
            std::uniform_int_distribution<std::int64_t>(0, std::chrono::microseconds(whole).count())(random));
        {
            Child join(world.launch({urlOf(world)}));
            std::this_thread::sleep_for(moment); // the fault itself: a kill at this moment
        }
        const auto begin = std::chrono::steady_clock::now();
        Child next(world.launch({urlOf(world)}));
        ASSERT_EQ(next.wait(), 0) << "killed after " << moment.count() << " µs\n" << world.log();
        whole = std::max(whole, std::chrono::duration_cast<std::chrono::milliseconds>(
                                    std::chrono::steady_clock::now() - begin));
        expectWholeAgent(world);
        EXPECT_TRUE(eventually([&] { return world.agentStarts().ends_with("end\n"); })) << moment.count();
    }
}

} // namespace
} // namespace join::test
