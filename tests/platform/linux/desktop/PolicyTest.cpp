#include "platform/linux/desktop/Policy.h"

#include "support/Environment.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <tuple>

namespace join::platform {
namespace {

using namespace std::string_literals;

TEST(Policy, AllowsTheServersOfItsListAndNoneIfItIsNone) {
    const std::string listed =
        "# ours\n\n [Trust] \r\nOther=x\nWebServers = join.Example.com ; *.example.org:8443; [::1] ;;\n"
        "[Other]\nWebServers=evil.example\n";
    const std::tuple<std::string, std::string, bool> cases[] = {
        {listed, "JOIN.example.com", true},
        {listed, "join.example.com:8443", true},
        {listed, "a.b.example.org", true},
        {listed, "[::1]:443", true},
        {listed, "example.org", false},
        {listed, ".example.org", false},
        {listed, "evilexample.org", false},
        {listed, "join.example.com.evil.example", false},
        {listed, "evil.example", false},
        {listed, "", false},
        // no hosts
        {listed, "join.example.com:443/x?", false},
        {listed, "join.example.com@evil.example", false},
        {listed, "evil.example/.example.org", false},
        {listed, "evil.example#.example.org", false},
        {listed, "evil.example?.example.org", false},
        {listed, "evil.example\\.example.org", false},
        {listed, "join.example.com:x", false},
        {listed, "join.example.com:1:2", false},
        {listed, "[::1", false},
        {listed, "[::1]x", false},
        {listed, "\u00e4.example.org", false},
        // without the key
        {"", "a@b", true},
        {"WebServers", "a", false},
        {"[trust]\nWebServers=a\n[Trust]\nwebservers=b", "c", true},
        // an empty list, or no policy
        {"[Trust]\nWebServers=", "a", false},
        {"[Trust]\nWebServers= ;", "a", false},
        {"WebServers=a", "a", false},
        {"[Trust\nWebServers=a", "a", false},
        {"[Trust]\nWebServers=a\nnonsense", "a", false},
        {"[Trust]\nWebServers=a;https://b/", "a", false},
        {"[Trust]\nWebServers=a;*", "a", false},
        {"[Trust]\nWebServers=a;*.", "a", false},
        {"[Trust]\nWebServers=a\n#\xFF", "a", false},
        {"[Trust]\nWebServers=a\n#\0"s, "a", false},
    };
    for (const auto& [text, server, isAllowed] : cases) {
        const auto reason = Policy(text, "p").reasonToRefuse(server);
        EXPECT_EQ(!reason, isAllowed) << text << server << reason.value_or("");
        EXPECT_TRUE(!reason || reason->starts_with(server + " is not a web server that p allows")) << *reason;
    }
}

TEST(Policy, IsTheFirstOfItsFoldersAndNoneIsAllowedIfItCannotBeRead) {
    const test::TemporaryFolder world;
    const auto fileIn = [&](const std::string& folder) { return world / (folder + "/tavojoin/policy.conf"); };
    test::writeFile(fileIn("b"), "[Trust]\nWebServers=b");
    test::writeFile(fileIn("c"), "[Trust]\nWebServers=c");
    test::writeFile(fileIn("long"), std::string(70'000, '#'));
    std::filesystem::create_directories(fileIn("folder"));
    for (const auto& [folders, allowed] :
         {std::pair{":relative:" + world / "a" + ":" + world / "b" + ":" + world / "c", "b"},
          {world / "c", "c"},
          {world / "a", "b c"},
          {world / "long" + ":" + world / "b", ""},
          {world / "folder" + ":" + world / "b", ""}}) {
        const test::EnvironmentVariable variable("XDG_CONFIG_DIRS", folders.c_str());
        for (const std::string server : {"b", "c"})
            EXPECT_EQ(!Policy::ofComputer().reasonToRefuse(server),
                      std::string(allowed).find(server) != std::string::npos)
                << folders << server;
    }
}

} // namespace
} // namespace join::platform
