#include "platform/linux/files/SystemRoot.h"

#include "support/Environment.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <gtest/gtest.h>

using namespace join::platform;
using namespace join::test;

TEST(SystemRoot, OnlyTheSystemsOwnFoldersAreMapped) {
    const SystemRoot root("/data/root/");
    const std::pair<const char*, const char*> mapped[] = {
        {"/Volumes", "/data/root/Volumes"},
        {"/Applications/Join.app", "/data/root/Applications/Join.app"},
        {"//Volumes///x//y/", "/data/root/Volumes/x/y"},
        {"/Volumes/./x/.", "/data/root/Volumes/x"},
        {"/tmp/../Volumes/...", "/data/root/Volumes/..."},
        {"/Volumes/x/../../System", "/data/root/System"},
        {"/Volumes/../x", "/x"},
        {"/Volumes/../../../etc/passwd", "/etc/passwd"},
        {"/Volumes/..", "/"},
        {"/..", "/"}};
    for (const auto& [system, real] : mapped)
        EXPECT_EQ(root.toReal(system), real) << system;
    for (const char* path : {"/", "/VolumesOfMine/x", "/volumes/x", "/home/ann/Volumes", "Volumes/x", ""})
        EXPECT_EQ(root.toReal(path), path);
}

TEST(SystemRoot, OnlyPathsOfTheSystemsFoldersBelowTheRootAreMappedBack) {
    const SystemRoot root("/data/root");
    EXPECT_EQ(root.toSystem("/data/root/Volumes/x"), "/Volumes/x");
    EXPECT_EQ(root.toSystem("/data/root//System/"), "/System");
    EXPECT_EQ(root.toSystem("/data/root/Volumes/../../secret"), "/data/secret");
    for (const char* path : {"/data/root/other", "/data/rootVolumes/x", "/data/root", "/Volumes/x", "x"})
        EXPECT_EQ(root.toSystem(path), path);
}

TEST(SystemRoot, ARootReachedThroughALinkIsKnownByBothItsPaths) {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / "real/root");
    std::filesystem::create_directory_symlink(folder / "real", folder / "link");
    const SystemRoot root(folder / "link/root");
    EXPECT_EQ(root.toSystem(folder / "link/root/Applications/A.app"), "/Applications/A.app");
    const auto resolved = std::filesystem::canonical(folder / "real/root").string();
    EXPECT_EQ(root.toSystem(resolved + "/Applications/A.app"), "/Applications/A.app");
}

TEST(SystemRoot, LiesInTheUsersDataFolder) {
    const EnvironmentVariable unset("XDG_DATA_HOME", nullptr);
    EXPECT_EQ(defaultSystemRoot("/home/ann"), "/home/ann/.local/share/tavojoin/root");
    const EnvironmentVariable absolute("XDG_DATA_HOME", "/data");
    EXPECT_EQ(defaultSystemRoot("/home/ann"), "/data/tavojoin/root");
    const EnvironmentVariable relative("XDG_DATA_HOME", "data");
    EXPECT_EQ(defaultSystemRoot("/home/ann"), "/home/ann/.local/share/tavojoin/root");
}
