#include "endtoend/JoinWorld.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace join::test {
namespace {

using namespace std::chrono_literals;

TEST(Install, ABareComputerJoinsAndTheNextRunOnlyStartsThePrograms) {
    const JoinWorld world(delivering());
    fs::create_directories(world.home() + "/Applications");
    ASSERT_EQ(statusOf(world.launch({world.url()})), 0) << world.log();

    EXPECT_EQ(count(world.requests(), "GET /join-session?key=123456789&role=agent&email=ann@example.org 200"),
              1);
    EXPECT_EQ(count(world.requests(), "GET /agent/TavoMac.dmg 200"), 1);
    EXPECT_TRUE(world.agentRuns());
    EXPECT_NE(world.agentStarts().find("\"M3\":\"Agent downloaded time : "), std::string::npos);
    EXPECT_NE(world.agentStarts().find(" | Server : " + world.host()), std::string::npos);
    EXPECT_EQ(world.crashDetectorStarts(), "");
    for (const std::string& folder : {world.systemRoot(), world.home()})
        EXPECT_EQ(::access((folder + "/Applications/Join.app/Contents/MacOS/Join").c_str(), X_OK), 0)
            << folder;
    expectWholeAgent(world);
    EXPECT_EQ(leftIn(world), std::vector<std::string>());

    EXPECT_EQ(statusOf(world.launch({world.url()}, world.systemRoot() + "/Applications/Join.app")), 0)
        << world.log();
    EXPECT_TRUE(eventually([&] { return world.crashDetectorStarts().ends_with("end\n"); }));
    EXPECT_EQ(count(world.agentStarts(), "start\n"), 2);
    EXPECT_EQ(count(world.requests(), ".dmg") + count(world.requests(), "/join-session"), 2);
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
        EXPECT_EQ(leftIn(world), std::vector<std::string>());
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
        EXPECT_EQ(leftIn(world), std::vector<std::string>()) << place;
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
    EXPECT_EQ(leftIn(world), std::vector<std::string>());

    const std::string form = contentsOf(mail / "1.txt");
    EXPECT_NE(form.find("key=123456789\n"), std::string::npos) << form;
    EXPECT_NE(form.find("comment=Join App faild to download TavoMac.dmg\n"), std::string::npos) << form;
    Child unzip({.command = {"cmake", "-E", "tar", "xf", "1.zip"}, .directory = mail.path()});
    EXPECT_EQ(unzip.wait(), 0);
    EXPECT_EQ(count(contentsOf(mail / "Join/join.log"), "Download failed! Error - "), 7);
    EXPECT_EQ(count(world.log(), "Download continues, bytes kept : "), 3 + 2);
}

} // namespace
} // namespace join::test
