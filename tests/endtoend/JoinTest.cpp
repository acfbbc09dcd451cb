#include "endtoend/JoinWorld.h"

#include <gtest/gtest.h>

namespace join::test {
namespace {

TEST(Join, StartsWithClosedStreamsInABareHomeAndAsksNothingOfAServerThatThePolicyDoesNotAllow) {
    const JoinWorld world;
    const std::string policy =
        writeFile(world.home() + "/xdg/tavojoin/policy.conf", "[Trust]\nWebServers=*.localhost");
    Launch launch = world.launch({world.url()});
    launch.command.insert(launch.command.begin(), {"sh", "-c", "exec \"$0\" \"$@\" <&- >&- 2>&-"});
    launch.environment.emplace_back("XDG_CONFIG_DIRS", world.home() + "/xdg");
    const Child join(launch);
    ASSERT_TRUE(world.logs("Launch app called : 1"));
    EXPECT_TRUE(
        world.logHolds("refused : " + world.host() + " is not a web server that " + policy + " allows"));
    EXPECT_FALSE(fs::exists(world.support("tavojoindetails.conf")));
    EXPECT_EQ(world.requests(), "");
    EXPECT_EQ(fs::status(world.home() + "/Library").permissions(), fs::perms::owner_all);
    EXPECT_TRUE(isAlive(join.process()));
}

TEST(Join, SaysInOneLineWhyItDoesNotStart) {
    constexpr auto usage = "Join: Join takes one optional argument, a launch URL, tavojoin://…\n";
    constexpr auto noDisplay = "Join: there is no display to show a window on: ";
    const struct {
        std::vector<std::string> arguments;
        const char* platform = "offscreen";
        const char* display = "";
        int status = 2;
        std::string_view says = usage;
    } cases[] = {{{""}},
                 {{"-platform"}},
                 {{"tavojoin"}},
                 {{"tavojoin://k=1", "tavojoin://k=2"}},
                 {{}, "xcb", ":4711", 69, noDisplay},
                 {{}, "xcb", "", 69, noDisplay},
                 {{}, "nothing", "", 69, noDisplay}};
    const JoinWorld world;
    for (const auto& [arguments, platform, display, status, says] : cases) {
        Launch launch = world.launch(arguments);
        launch.environment.emplace_back("QT_QPA_PLATFORM", platform);
        launch.environment.emplace_back("DISPLAY", display);
        EXPECT_EQ(statusOf(launch), status) << platform;
        const std::string said = world.output();
        EXPECT_TRUE(said.starts_with(says) && said.find('\n') == said.size() - 1) << said;
    }
    EXPECT_FALSE(fs::exists(world.home() + "/Library"));
}

} // namespace
} // namespace join::test
