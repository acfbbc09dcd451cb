#include "endtoend/JoinWorld.h"

#include <gtest/gtest.h>

#include <regex>

namespace join::test {
namespace {

using namespace std::chrono_literals;

/// What an installation needs only on its way, and has left behind.
std::string leftIn(const JoinWorld& world) {
    world.run({"find", "-L", world.home(), "-name", "*.partial", "-o", "-name", "*.dmg", "-o", "-path",
               "*/Volumes/*", "-o", "-path", "*/Applications/.*", "-o", "-path", "*/TavoMeetingNative/.*"});
    return world.output();
}

TEST(Install, ABareComputerJoinsAndTheNextRunOnlyStartsThePrograms) {
    const JoinWorld world(delivering());
    fs::create_directories(world.home() + "/Applications");
    ASSERT_EQ(statusOf(world.launch({world.url()})), 0) << world.log();
    ASSERT_TRUE(world.agentRuns());
    EXPECT_EQ(world.crashDetectorStarts(), "");
    EXPECT_TRUE(world.isJoinInstalled());
    EXPECT_EQ(leftIn(world), "");

    const std::string installed = world.systemRoot() + "/Applications/Join.app";
    ASSERT_EQ(statusOf(world.launch({world.url("&gwn=gw1&cav=1.4")}, installed)), 0) << world.log();
    EXPECT_TRUE(eventually([&] { return count(world.agentStarts(), "end\n") == 2; }));
    const std::string start = "start\ndirectory /\nargument -timestamps\n"
                              "argument {\"M1\":\"Join Launched time : T\",";
    const std::string end = ",\"M4\":\"Agent launched time : T\"}\nend\n";
    EXPECT_EQ(std::regex_replace(world.agentStarts(), std::regex("[0-9]{2}:[0-9]{2}:[0-9]{2}"), "T"),
              start + "\"M3\":\"Agent downloaded time : T | Server : " + world.host() + "\"" + end + start +
                  "\"M2\":\"Session Validated : T\"" + end);
    EXPECT_TRUE(eventually([&] { return world.crashDetectorStarts().ends_with("end\n"); }));
    EXPECT_EQ(world.crashDetectorStarts(),
              "start\ndirectory " + fs::path(world.support("")).parent_path().string() + "\nend\n");
    EXPECT_EQ(count(contentsOf(world.support("tavojoindetails.conf")), "&gatewayName=gw1&"), 1);
    EXPECT_EQ(
        std::regex_replace(world.requests(), std::regex("\\S+ (GET \\S+ \\d+) .*"), "$1"),
        "GET /join-session?key=123456789&role=agent&email=ann@example.org 200\n"
        "GET /agent/TavoMac.dmg 200\n"
        "GET /api/public/json/meetings/checkSessionID?key=123456789&installed-version=5.2&os=mac 200\n");
}

TEST(Install, JoinLivesInAnyHomeAndNeverRemovesTheCopyThatRuns) {
    const std::string odd = "caf\xE9"; // not UTF-8
    const struct {
        std::string home;    ///< how $HOME is spelled; the folder is the odd one
        const char* ofUsers; ///< where the user's Applications folder leads; the system's is "system"
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
        Child join(start({world.url()}, JOIN_BUNDLE));
        ASSERT_EQ(join.wait(), 0) << home << world.log() << world.output();
        EXPECT_TRUE(world.agentRuns()) << home;
        EXPECT_EQ(leftIn(world), "");
        for (long times = 0; const auto& [path, target] : applications) {
            const std::string program = path + "/Join.app/Contents/MacOS/Join";
            const fs::path same = folder / std::to_string(++times);
            fs::create_hard_link(program, same);
            const Child plain(start({}, path + "/Join.app"));
            EXPECT_TRUE(eventually([&] { return count(world.log(), "window has been shown") == times; }));
            EXPECT_TRUE(fs::equivalent(program, same)) << home << ' ' << program;
        }
    }
}

TEST(Install, AnOutdatedJoinUpdatesItselfWhereverItRunsFrom) {
    for (const std::string place : {"Downloads", "Applications", ".local/share/tavojoin/root/Applications"}) {
        const JoinWorld world(delivering());
        world.installPrograms();
        JoinWorld::copyJoinTo(world.home() + "/Applications");
        JoinWorld::copyJoinTo(world.home() + "/Downloads");
        const std::string from = world.home() + "/" + place + "/Join.app";
        ASSERT_EQ(statusOf(world.launch({world.url("&jav=99.0&cav=1.4")}, from)), 0) << place << world.log();
        EXPECT_TRUE(eventually([&] { return world.crashDetectorStarts().ends_with("end\n"); })) << place;
        EXPECT_TRUE(world.logHolds("JoinMac.dmg mount task termination status : 0")) << place;
        for (const std::string& root : {world.systemRoot(), world.home()}) {
            const std::string list = contentsOf(root + "/Applications/Join.app/Contents/Info.plist");
            // From elsewhere its own copies came first, as they do at every start.
            EXPECT_TRUE(place == "Downloads" || list.find("99.0") != std::string::npos) << place << root;
        }
        EXPECT_EQ(leftIn(world), "") << place;
    }
}

TEST(Install, TheAgentsDownloadIsTriedSevenTimesAndThenTheLogsAreSent) {
    const TemporaryFolder mail;
    const JoinWorld world(delivering({"--update-needed", "true", "--cdn-link", "self", "--image-fail", "all",
                                      "--image-fault", "cut", "--log-mail-folder", mail.path()}));
    JoinWorld::copyJoinTo(world.systemRoot() + "/Applications");
    const Child join(world.launch({world.url()}));
    EXPECT_TRUE(eventually([&] { return world.logHolds("Log File sent succesfully!"); }, 60s)) << world.log();
    EXPECT_EQ(count(world.requests(), "GET /TavoMac.dmg "), 4) << world.requests();
    EXPECT_EQ(count(world.requests(), "GET /agent/TavoMac.dmg "), 3) << world.requests();
    EXPECT_EQ(leftIn(world), "");

    const std::string form = contentsOf(mail / "1.txt");
    EXPECT_NE(form.find("comment=Join App faild to download TavoMac.dmg\n"), std::string::npos) << form;
    shell(mail.path(), "cmake -E tar xf 1.zip");
    EXPECT_EQ(count(contentsOf(mail / "Join/join.log"), "Download failed! Error - "), 7);
    EXPECT_EQ(count(world.log(), "Download continues, bytes kept : "), 3 + 2);
}

} // namespace
} // namespace join::test
