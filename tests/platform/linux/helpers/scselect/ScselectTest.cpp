#include "platform/linux/helpers/scselect/NetworkLocations.h"
#include "support/Child.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace join::test {

using namespace platform::scselect;
using platform::ChildProgram;

class Scselect : public testing::Test {
protected:
    ChildProgram tool(const std::string& name, const std::string& script) const {
        return {writeProgram(folder_ / name, "#!/bin/sh\n" + script + '\n'), {"an argument", "b"}};
    }

    static std::string ask(const std::vector<ChildProgram>& tools) {
        return networkLocations(tools, std::chrono::seconds(30));
    }

    TemporaryFolder folder_;
    const std::string heading_ = "Network connections of this computer:\n";
};

TEST_F(Scselect, TellsWhatTheFirstToolSaysThatIsThereAndSucceeds) {
    ::setenv("SECRET", "ours", 1);
    const ChildProgram good = tool("good", "read -r line && exit 1; echo \"$1 $2 $HOME$SECRET\"");
    const ChildProgram others = tool("others", "echo others");
    EXPECT_EQ(ask({good, others}), heading_ + "an argument b \n");
    for (const ChildProgram& bad : {ChildProgram{folder_ / "missing", {}}, tool("failing", "echo a; exit 8"),
                                    tool("killed", "echo a; kill -9 $$"), tool("silent", "")})
        EXPECT_EQ(ask({bad, others}), heading_ + "others\n") << bad.path;
    const ChildProgram hanging =
        tool("hanging", "/bin/sleep 3600 & echo $! > '" + (folder_ / "started") + "'; wait");
    EXPECT_EQ(networkLocations({hanging, others}, std::chrono::milliseconds(500)),
              "No network connection is known\n");
    // A process that has ended has no command line, even before anybody has asked for its status.
    const int started = std::stoi(contentsOf(folder_ / "started"));
    EXPECT_TRUE(
        eventually([&] { return contentsOf("/proc/" + std::to_string(started) + "/cmdline").empty(); }));
}

TEST_F(Scselect, MakesWhatIsSaidHarmlessAndFitForAPipe) {
    EXPECT_EQ(ask({tool("hostile", R"(printf 'B\303\274ro\033[2J\377')")}), heading_ + "Büro\\x1B[2J\\xFF");
    const std::string endless = ask({tool("endless", R"(while :; do printf '\033\033\033\033'; done)")});
    EXPECT_GT(endless.size(), 50'000U);
    EXPECT_LE(endless.size(), 65'536U);
}

TEST_F(Scselect, IsAProgramThatTakesAtMostOneArgument) {
    const auto run = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), SCSELECT_PROGRAM);
        return Child({.command = arguments, .output = folder_ / "output"}).wait();
    };
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{}, {"false"}, {"-x"}}) {
        EXPECT_EQ(run(arguments), 0);
        EXPECT_NE(contentsOf(folder_ / "output").find("etwork connection"), std::string::npos);
    }
    EXPECT_EQ(run({"a", "b"}), 2);
}

} // namespace join::test
