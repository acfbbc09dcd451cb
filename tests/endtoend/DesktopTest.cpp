#include "endtoend/JoinWorld.h"

#include <gtest/gtest.h>

#include <regex>

namespace join::test {
namespace {

TEST(Desktop, CarriesHostileLinksToTheRunningJoinAsTheyAre) {
    const JoinWorld world;
    world.installPrograms();
    const Child join(world.launch({}));
    const std::string types = world.home() + "/.config/mimeapps.list"; // what is registered last
    ASSERT_TRUE(eventually([&] { return !contentsOf(types).empty(); })) << world.log();
    const std::string entry = world.home() + "/.local/share/applications/com.tavo.join.desktop";
    const std::string installed = world.systemRoot() + "/Applications/Join.app/Contents/MacOS/Join";
    EXPECT_NE(contentsOf(entry).find("\nExec=" + installed + " %u\n"), std::string::npos);
    const std::string trap = world.home() + "/sprung";
    const std::string links[] = {"tavojoin://e=a%20b",
                                 "tavojoin://e=$(touch " + trap + ")&x=`touch " + trap + "`",
                                 "tavojoin://e=\"; touch " + trap + "; '",
                                 "tavojoin://e=a b\tc%u%f\\",
                                 "tavojoin://e=line\nbreak",
                                 "tavojoin:--help -platform nothing"};
    for (const std::string& link : links) {
        Launch open = world.launch({});
        open.command = {"xdg-open", link};
        open.environment.emplace_back("DISPLAY", ":0"); // without one it looks for text browsers
        open.output = "/dev/null";
        EXPECT_EQ(statusOf(open), 0) << link;
        const std::string line =
            "Received Launch App Url : " + std::regex_replace(link, std::regex("\n"), "%0A") + "\n";
        EXPECT_TRUE(eventually([&] { return world.logHolds(line); })) << link << world.log();
    }
    EXPECT_FALSE(fs::exists(trap));
    EXPECT_TRUE(isAlive(join.process()));
}

} // namespace
} // namespace join::test
