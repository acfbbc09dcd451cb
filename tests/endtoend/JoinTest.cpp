#include "endtoend/JoinWorld.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace join::test {
namespace {

TEST(Join, StartsTheInstalledAgentFromALaunchUrlAndQuits) {
    const JoinWorld world({"--update-needed", "false"});
    world.installPrograms();
    EXPECT_EQ(statusOf(world.launch({world.url("&gwn=gw1&cav=1.4")})), 0);

    EXPECT_NE(world.requests().find("GET /api/public/json/meetings/checkSessionID?key=123456789&"
                                    "installed-version=5.2&os=mac 200"),
              std::string::npos);
    ASSERT_TRUE(world.agentRuns());
    const std::string agent = world.agentStarts();
    EXPECT_NE(agent.find("argument -timestamps\nargument {\"M1\":\"Join Launched time : "),
              std::string::npos);
    EXPECT_NE(agent.find("\",\"M2\":\"Session Validated : "), std::string::npos);
    EXPECT_NE(agent.find("\",\"M4\":\"Agent launched time : "), std::string::npos);
    EXPECT_EQ(agent.find("M3"), std::string::npos);
    ASSERT_TRUE(eventually([&] { return world.crashDetectorStarts().ends_with("end\n"); }));
    std::string supportFolder = world.support("");
    supportFolder.pop_back();
    EXPECT_EQ(world.crashDetectorStarts(), "start\ndirectory " + supportFolder + "\nend\n");
    EXPECT_EQ(contentsOf(world.support("tavojoindetails.conf")),
              "TAVO_MEETING_IND\n&gatewayPort=443&webServerPort=443&gatewayName=gw1&defaultGatewayName=(null)"
              "&webServerName=" +
                  world.host() +
                  "&isDemoMode=false&isDemoTech=false&group=null&email=ann@example.org&key=123456789&");
    EXPECT_TRUE(world.logHolds("-[TavoJoinWindowHandler close] : Agent invoked successfully"));
    EXPECT_TRUE(world.log().ends_with(std::string(133, '-') + "\n\n"));
}

TEST(Join, AsksAndKeepsNothingForALinkToAServerThatThePolicyDoesNotAllow) {
    const JoinWorld world;
    const std::string policy =
        writeFile(world.home() + "/xdg/tavojoin/policy.conf", "[Trust]\nWebServers=*.localhost");
    Launch launch = world.launch({world.url()});
    launch.environment.emplace_back("XDG_CONFIG_DIRS", world.home() + "/xdg");
    const Child join(launch);
    ASSERT_TRUE(world.logs("Launch app called : 1"));
    EXPECT_TRUE(
        world.logHolds("refused : " + world.host() + " is not a web server that " + policy + " allows"));
    EXPECT_FALSE(fs::exists(world.support("tavojoindetails.conf")));
    EXPECT_EQ(world.requests(), "");
    EXPECT_TRUE(isAlive(join.process()));
}

TEST(Join, RefusesArgumentsThatAreNoLaunchUrl) {
    const JoinWorld world;
    const std::vector<std::vector<std::string>> refused = {
        {""},          {"--help"},
        {"-platform"}, {"https://example.org/"},
        {"tavojoin"},  {"tavojoin://k=1", "tavojoin://k=2"}};
    for (const auto& arguments : refused) {
        EXPECT_EQ(statusOf(world.launch(arguments)), 2) << arguments.front();
        EXPECT_EQ(world.output().find('\n'), world.output().size() - 1) << world.output();
    }
    EXPECT_FALSE(fs::exists(world.home() + "/Library"));
}

TEST(Join, SaysSoWithoutADisplay) {
    const JoinWorld world;
    const std::pair<std::string, std::string> places[] = {{"xcb", ":4711"}, {"xcb", ""}, {"nothing", ""}};
    for (const auto& [platform, display] : places) {
        Launch launch = world.launch({});
        launch.environment.emplace_back("QT_QPA_PLATFORM", platform);
        launch.environment.emplace_back("DISPLAY", display);
        EXPECT_EQ(statusOf(launch), 69);
        const std::string said = world.output();
        EXPECT_TRUE(said.starts_with("Join: there is no display to show a window on: ")) << said;
        EXPECT_EQ(said.find('\n'), said.size() - 1) << said;
    }
    EXPECT_FALSE(fs::exists(world.home() + "/Library"));
}

TEST(Join, StartsInABareHomeWithClosedStandardStreams) {
    const JoinWorld world;
    Launch launch = world.launch({});
    launch.command = {"/bin/sh", "-c", "exec \"$0\" <&- >&- 2>&-", launch.command.front()};
    const Child join(launch);
    EXPECT_TRUE(world.logs("Launch app called : 0"));
    EXPECT_TRUE(isAlive(join.process()));
    struct stat library {};
    ASSERT_EQ(::stat((world.home() + "/Library").c_str(), &library), 0);
    EXPECT_EQ(library.st_mode & 07777U, 0700U);
}

} // namespace
} // namespace join::test
