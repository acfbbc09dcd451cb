#include "standins/ServiceImages.h"

#include "images/SevenZip.h"
#include "support/Child.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using join::test::Child;
using join::test::contentsOf;
using join::test::isWell;
using join::test::sevenZip;
using join::test::TemporaryFolder;
using join::test::writeFile;
using Texts = std::vector<std::string>;

/// A build's bundle under another name, with a program and a link.
std::string makeJoinApp(const TemporaryFolder& folder) {
    const std::string program = writeFile(folder / "Built.app/Contents/MacOS/Join", "#!/bin/sh\n");
    fs::permissions(program, fs::perms{0755});
    fs::create_directory_symlink("MacOS", folder / "Built.app/Contents/Current");
    return folder / "Built.app";
}

int make(const TemporaryFolder& folder, Texts options) {
    options.insert(options.begin(), {MAKE_SERVICE_IMAGES_PROGRAM, folder / "new/images"});
    return Child({.command = options, .output = folder / "output"}).wait();
}

TEST(MakeServiceImages, LaysOutBothVolumesInEachKind) {
    const TemporaryFolder folder;
    const std::string joinApp = makeJoinApp(folder);
    const std::string agentImage = folder / "new/images/TavoMac.dmg";
    const std::string joinImage = folder / "new/images/JoinMac.dmg";
    struct Kind {
        std::string name, type, agentTop, joinTop;
    };
    for (const Kind& kind : {Kind{"udif-zlib", "dmg", "Tavo/", "TavoJoin/"},
                             {"udif-plain", "dmg", "Tavo/", "TavoJoin/"},
                             {"iso", "iso", "", ""}}) {
        SCOPED_TRACE(kind.name);
        ASSERT_EQ(make(folder, {"--join-app", joinApp, "--kind", kind.name, "--agent-version", "6.1"}), 0)
            << contentsOf(folder / "output");
        EXPECT_TRUE(isWell(agentImage, kind.type) && isWell(joinImage, kind.type));
        const auto holds = [&](const std::string& image, const std::string& path, const std::string& mode) {
            const std::string entry = sevenZip({"l", "-slt", image, path});
            return entry.find("\nPath = " + path + '\n') != std::string::npos &&
                   entry.find("\nMode = " + mode) != std::string::npos;
        };
        EXPECT_TRUE(holds(agentImage, kind.agentTop + "Tavo.app/Contents/MacOS/Tavo", "-rwxr-xr-x"));
        EXPECT_TRUE(holds(agentImage, kind.agentTop + "TavoCrashDetector", "-rwxr-xr-x"));
        EXPECT_TRUE(holds(agentImage, kind.agentTop + "Applications", "l"));
        EXPECT_TRUE(holds(joinImage, kind.joinTop + "Join.app/Contents/MacOS/Join", "-rwxr-xr-x"));
        EXPECT_TRUE(holds(joinImage, kind.joinTop + "Join.app/Contents/Current", "l"));
        EXPECT_TRUE(holds(joinImage, kind.joinTop + "Applications", "l"));
        EXPECT_NE(sevenZip({"e", "-so", agentImage, kind.agentTop + "Tavo.app/Contents/Info.plist"})
                      .find("<string>6.1</string>"),
                  std::string::npos);
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "new/images"), {}),
              2); // nothing left beside them
}

TEST(MakeServiceImages, AddsAPayloadThatDoesNotCompress) {
    const TemporaryFolder folder;
    ASSERT_EQ(make(folder, {"--join-app", makeJoinApp(folder), "--payload", "3"}), 0);
    EXPECT_GT(fs::file_size(folder / "new/images/TavoMac.dmg"), 3'000'000);
    EXPECT_LT(fs::file_size(folder / "new/images/JoinMac.dmg"), 1'000'000);
    EXPECT_NE(sevenZip({"l", folder / "new/images/TavoMac.dmg"}).find(" 3000000 "), std::string::npos);
}

TEST(MakeServiceImages, RefusesAWrongCommandLine) {
    const TemporaryFolder folder;
    const std::string joinApp = makeJoinApp(folder);
    for (const Texts& wrong : std::vector<Texts>{{},
                                                 {"--join-app"},
                                                 {"--join-app", joinApp, "--kind", "zip"},
                                                 {"--join-app", joinApp, "--payload", "-1"},
                                                 {"--join-app", joinApp, "--payload", "3x"},
                                                 {"--join-app", joinApp, "--colour", "red"}})
        EXPECT_EQ(make(folder, wrong), 2) << testing::PrintToString(wrong);
    EXPECT_EQ(make(folder, {"--join-app", folder / "missing"}), 1);
}

} // namespace
