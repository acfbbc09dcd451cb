#include "platform/linux/scselect/ActiveConnections.h"
#include "platform/linux/scselect/LocationList.h"
#include "support/Child.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>

namespace join::test {

using namespace platform::scselect;
using Connections = std::vector<Connection>;

TEST(ActiveConnections, AreReadWithTheirEscapes) {
    const std::vector<std::pair<std::string, Connections>> cases{
        {"", {}},
        {"Wired 1:802-3-ethernet:eth0\n", {{"Wired 1", "802-3-ethernet", "eth0"}}},
        {"a\\:b\\\\:wifi:w\nc:vpn:", {{"a:b\\", "wifi", "w"}, {"c", "vpn", ""}}},
        {"lo:loopback:lo\n", {}},
        {"\n:\na:b\na:b:c:d\nx:y\\:z\nlast:t:d\\", {{"last", "t", "d\\"}}},
    };
    for (const auto& [text, connections] : cases)
        EXPECT_EQ(parseConnections(text), connections) << text;
}

TEST(LocationList, ReadsWellAndStaysBounded) {
    const std::string heading = "Network locations of this computer (* is in use):\n";
    const std::vector<std::pair<Locations, std::string>> cases{
        {{}, "   no network\n"},
        {{{{"Büro", "wifi", "w0"}, {"VPN", "vpn", ""}}, {{"e0"}}}, " * Büro (wifi, w0)\n * VPN (vpn)\n"},
        {{{}, {{"e0", true, true}, {"e1", false, true}, {"e2", true, false}, {"e3"}}},
         " * e0 (IPv4, IPv6)\n * e1 (IPv6)\n * e2 (IPv4)\n * e3 (no address)\n"},
        {{{{"a\x1b[2J\n\t\xff", "t", "d"}}, {}}, " * a\\x1B[2J\\x0A\\x09\\xFF (t, d)\n"},
        {{{{std::string(63, 'a') + "éé", "t", "d"}}, {}}, " * " + std::string(63, 'a') + "… (t, d)\n"},
    };
    for (const auto& [locations, lines] : cases)
        EXPECT_EQ(describe(locations), heading + lines);

    const std::string hostile(1000, '\x1b');
    const std::string many = describe({Connections(1000, {hostile, hostile, hostile}), {}});
    EXPECT_EQ(std::count(many.begin(), many.end(), '\n'), 100);
    EXPECT_TRUE(many.ends_with("   and 902 more\n"));
    EXPECT_LT(many.size(), 65536U);
}

class FakeNmcli : public testing::Test {
protected:
    Connections ask(const std::string& script,
                    std::chrono::milliseconds patience = std::chrono::seconds(30)) {
        const std::string program = writeFile(folder_ / "nmcli", "#!/bin/sh\n" + script + '\n');
        std::filesystem::permissions(program, std::filesystem::perms::owner_all);
        return activeConnections({.nmcli = program, .patience = patience});
    }

    TemporaryFolder folder_;
};

TEST_F(FakeNmcli, IsAskedForItsActiveConnectionsWithNothingOfOurs) {
    ::setenv("SECRET", "ours", 1);
    EXPECT_EQ(ask(R"([ "$*" = "-t -f NAME,TYPE,DEVICE connection show --active" ] || exit 1
[ -z "$HOME$SECRET" ] || exit 1
read -r line && exit 1
echo a:b:c)"),
              (Connections{{"a", "b", "c"}}));
}

TEST_F(FakeNmcli, GivesNoConnectionsWhenItMisbehaves) {
    EXPECT_EQ(ask("echo a:b:c; exit 8"), Connections{});
    EXPECT_EQ(ask("echo a:b:c; kill -9 $$"), Connections{});
    EXPECT_EQ(ask("exec /usr/bin/yes a:b:c"), Connections{});
    EXPECT_EQ(ask("echo a:b:c; exec /bin/sleep 3600", std::chrono::milliseconds(100)), Connections{});
    EXPECT_EQ(activeConnections({.nmcli = folder_ / "missing"}), Connections{});
}

TEST(ScselectProgram, TellsTheLocationsAndTakesAtMostOneArgument) {
    const TemporaryFolder folder;
    const auto run = [&](const std::vector<std::string>& command) {
        return Child({.command = command, .output = folder / "output"}).wait();
    };
    const auto lines = [&] {
        const std::string output = contentsOf(folder / "output");
        return std::count(output.begin(), output.end(), '\n');
    };
    for (const std::vector<std::string>& command : {std::vector<std::string>{SCSELECT_PROGRAM},
                                                    {SCSELECT_PROGRAM, "false"},
                                                    {SCSELECT_PROGRAM, "-x"}}) {
        EXPECT_EQ(run(command), 0);
        EXPECT_GE(lines(), 2);
    }
    EXPECT_EQ(run({SCSELECT_PROGRAM, "a", "b"}), 2);
    EXPECT_EQ(lines(), 1);
}

} // namespace join::test
