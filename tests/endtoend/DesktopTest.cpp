#include "endtoend/JoinWorld.h"

#include <gtest/gtest.h>

namespace join::test {
namespace {

/// One of the desktop's own programs, run in the world of a Join.
Launch tool(const JoinWorld& world, std::vector<std::string> command) {
    Launch launch = world.launch({});
    launch.command = std::move(command);
    launch.output = world.home() + "/tool-output";
    return launch;
}

/// Registered, with the copy that stays where it is.
bool isRegistered(const JoinWorld& world) {
    const std::string entry = world.home() + "/.local/share/applications/com.tavo.join.desktop";
    const std::string installed = world.systemRoot() + "/Applications/Join.app/Contents/MacOS/Join";
    return eventually([&] {
        return count(contentsOf(entry), "\nExec=" + installed + " %u\n") > 0 &&
               count(contentsOf(world.home() + "/.config/mimeapps.list"), "tavojoin=com.tavo.join.desktop") >
                   0;
    });
}

TEST(Desktop, CarriesHostileLinksToTheRunningJoinAsTheyAre) {
    const JoinWorld world;
    const Child join(world.launch({}));
    ASSERT_TRUE(isRegistered(world)) << world.log();
    const std::string trap = world.home() + "/sprung";
    const std::vector<std::pair<std::string, std::string>> links = {
        {"tavojoin://e=a%20b", "tavojoin://e=a%20b"},
        {"tavojoin://e=$(touch " + trap + ")&x=`touch " + trap + "`", ""},
        {"tavojoin://e=\"; touch " + trap + "; '", ""},
        {"tavojoin://e=a b\tc%u%f\\", ""},
        {"tavojoin://e=line\nbreak", "tavojoin://e=line%0Abreak"},
        {"tavojoin:--help -platform nothing", ""},
    };
    for (const auto& [link, text] : links) {
        Launch open = tool(world, {"xdg-open", link});
        open.environment.emplace_back("DISPLAY", ":0"); // without one it looks for text browsers
        EXPECT_EQ(statusOf(open), 0) << link;
        const std::string line = "Received Launch App Url : " + (text.empty() ? link : text) + "\n";
        EXPECT_TRUE(eventually([&] { return world.logHolds(line); })) << link << world.log();
    }
    EXPECT_FALSE(fs::exists(trap));
    EXPECT_TRUE(isAlive(join.process()));
}

TEST(Desktop, StartsOneThatJoinsWhereNoneRuns) {
    const JoinWorld world({"--update-needed", "false"});
    world.installPrograms();
    {
        const Child join(world.launch({}));
        ASSERT_TRUE(isRegistered(world));
        ASSERT_TRUE(world.logs("Join main window has been shown")); // copied
    }
    world.endAll();
    Launch open = tool(world, {"xdg-open", world.url()});
    open.environment.emplace_back("DISPLAY", ":0");
    EXPECT_EQ(statusOf(open), 0);
    EXPECT_TRUE(world.agentRuns());
}

} // namespace
} // namespace join::test
