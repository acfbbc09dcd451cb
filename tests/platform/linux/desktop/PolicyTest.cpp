#include "platform/linux/desktop/Policy.h"

#include "support/Environment.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace join::test {
namespace {

using namespace platform;
using namespace std::string_literals;

/// Whether a policy with this text allows the server.
bool allows(const std::string& text, const std::string& server) {
    const auto reason = Policy(text, "p").reasonToRefuse(server);
    EXPECT_TRUE(!reason || reason->starts_with(server + " is not a web server that p allows")) << *reason;
    return !reason;
}

TEST(Policy, AllowsTheServersOfItsListAloneAllWithoutAListAndNoneIfItIsEmptyOrNoPolicy) {
    const std::string list =
        "# ours\n\n [Trust] \r\nOther=x\nWebServers = join.Example.com ; *.example.org:8443; [::1] ;;\n"
        "[Other]\nWebServers=evil.example\n";
    for (const char* server : {"JOIN.example.com", "join.example.com:8443", "a.b.example.org", "[::1]:443"})
        EXPECT_TRUE(allows(list, server)) << server;
    const char* others[] = {
        "example.org", ".example.org", "evilexample.org", "join.example.com.evil.example", "evil.example", "",
        // no hosts
        "join.example.com@evil.example", "evil.example/.example.org", "evil.example\\.example.org",
        "join.example.com:x", "join.example.com:1:2", "[::1", "[::1]x", "\u00e4.example.org"};
    for (const char* server : others)
        EXPECT_FALSE(allows(list, server)) << server;

    EXPECT_TRUE(allows("", "a@b"));
    EXPECT_TRUE(allows("[trust]\nWebServers=a\n[Trust]\nwebservers=b", "c"));
    for (const std::string& list :
         {""s, " ;"s, "a\nnonsense"s, "a;https://b/"s, "a;*"s, "a;*."s, "a\n#\xFF"s, "a\n#\0"s})
        EXPECT_FALSE(allows("[Trust]\nWebServers=" + list, "a")) << list;
}

TEST(Policy, IsTheFirstOfItsFoldersAndNoneIsAllowedIfItCannotBeRead) {
    const TemporaryFolder world;
    for (const auto& [folder, text] : {std::pair{"b", "[Trust]\nWebServers=b"s},
                                       {"c", "[Trust]\nWebServers=c"},
                                       {"long", std::string(70'000, '#')}})
        writeFile(world / folder + "/tavojoin/policy.conf", text);
    fs::create_directories(world / "folder/tavojoin/policy.conf");
    for (const auto& [folders, allowed] :
         {std::pair{":relative:" + world / "a" + ":" + world / "b" + ":" + world / "c", "b"},
          {world / "a", "bc"},
          {world / "long" + ":" + world / "b", ""},
          {world / "folder" + ":" + world / "b", ""}}) {
        const EnvironmentVariable variable("XDG_CONFIG_DIRS", folders.c_str());
        std::string found;
        for (const std::string server : {"b", "c"})
            found += Policy::ofComputer().reasonToRefuse(server) ? "" : server;
        EXPECT_EQ(found, allowed) << folders;
    }
}

} // namespace
} // namespace join::test
