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

    static std::string ask(const std::vector<ChildProgram>& tools, int milliseconds = 30'000) {
        return networkLocations(tools, std::chrono::milliseconds(milliseconds));
    }

    TemporaryFolder folder_;
    const std::string heading_ = "Network connections of this computer:\n";
};

TEST_F(Scselect, TellsWhatTheFirstToolSaysThatIsThereAndSucceeds) {
    ::setenv("SECRET", "ours", 1);
    const ChildProgram good =
        tool("good", "read -r line && exit 1; echo \"$1 $2 $HOME$SECRET\"; exec >&-; sleep 0.1");
    const ChildProgram others = tool("others", "echo others");
    EXPECT_EQ(ask({good, others}), heading_ + "an argument b \n");
    for (const ChildProgram& bad : {ChildProgram{folder_ / "missing", {}}, tool("failing", "echo a; exit 8"),
                                    tool("killed", "echo a; kill -9 $$"), tool("silent", "")})
        EXPECT_EQ(ask({bad, others}), heading_ + "others\n") << bad.path;
    const ChildProgram hanging =
        tool("hanging", "sleep 3600 & echo $! > '" + (folder_ / "started") + "'; wait");
    EXPECT_EQ(ask({hanging, others}, 500), "No network connection is known\n");
    // A process that has ended has no command line, even before anybody has asked for its status.
    const std::string started = std::to_string(std::stoi(contentsOf(folder_ / "started")));
    EXPECT_TRUE(eventually([&] { return contentsOf("/proc/" + started + "/cmdline").empty(); }));
}

TEST_F(Scselect, MakesWhatIsSaidHarmlessAndFitForAPipe) {
    EXPECT_EQ(ask({tool("hostile", R"(printf 'B\303\274ro\033[2J\377')")}), heading_ + "Büro\\x1B[2J\\xFF");
    const std::string endless = ask({tool("endless", R"(while :; do printf '\033\033\033\033'; done)")});
    EXPECT_EQ(endless.size(), heading_.size() + 60'000);
}

TEST_F(Scselect, IsAProgramThatTakesAtMostOneArgument) {
    EXPECT_EQ(shell(fs::path(SCSELECT_PROGRAM).parent_path(), R"(
                    { ./scselect && ./scselect false && ./scselect -x; } | grep -c 'etwork connection'
                    ./scselect a b 2>&1; echo $?)"),
              "3\nusage: scselect [LOCATION]\n2\n");
}

} // namespace join::test
