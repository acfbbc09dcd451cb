#include "platform/linux/files/LinuxPaths.h"

#include "platform/linux/files/SystemRoot.h"
#include "support/Child.h"
#include "support/Environment.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace join::platform;
using namespace join::test;
using namespace std::string_literals;

TEST(SystemRoot, StandsForTheSystemsOwnFoldersAndNoOthersInTheUsersDataFolder) {
    const EnvironmentVariable data("XDG_DATA_HOME", "/data//");
    const SystemRoot root(defaultSystemRoot("/home/ann"));
    const std::pair<const char*, const char*> mapped[] = {
        {"/Volumes", "/data/tavojoin/root/Volumes"},
        {"/Applications/Join.app", "/data/tavojoin/root/Applications/Join.app"},
        {"//Volumes/./x//y/.", "/data/tavojoin/root/Volumes/x/y"},
        {"/tmp/x/../../System/...", "/data/tavojoin/root/System/..."},
        {"/Volumes/../../../etc/passwd", "/etc/passwd"}};
    for (const auto& [system, real] : mapped)
        EXPECT_EQ(root.toReal(system), real) << system;
    for (const char* path : {"/", "/VolumesOfMine/x", "/volumes/x", "/home/ann/Volumes", "Volumes/x", ""})
        EXPECT_EQ(root.toReal(path), path);
}

TEST(SystemRoot, OnlyPathsOfTheSystemsFoldersBelowTheRootAreMappedBack) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "real");
    fs::create_directory_symlink(folder / "real", folder / "link");
    const SystemRoot root(folder / "link/base");
    for (const std::string& place : {folder / "link", fs::canonical(folder / "real").string()}) {
        EXPECT_EQ(root.toSystem(place + "/base/Volumes/x"), "/Volumes/x");
        EXPECT_EQ(root.toSystem(place + "/base//System/"), "/System");
        EXPECT_EQ(root.toSystem(place + "/base/Volumes/../../secret"), place + "/secret");
        for (const std::string& path :
             {place + "/base/other", place + "/baseVolumes/x", place + "/base", "/Volumes/x"s, "x"s})
            EXPECT_EQ(root.toSystem(path), path);
    }
}

/// A user whose home is a fresh folder, and who has set nothing else.
class LinuxPathsOfAUser : public testing::Test {
protected:
    static fs::perms modeOf(const std::string& path) { return fs::status(path).permissions(); }

    TemporaryFolder folder_;
    EnvironmentVariable home_{"HOME", folder_.path().c_str()};
    EnvironmentVariable temporary_{"TMPDIR", nullptr};
    EnvironmentVariable cache_{"XDG_CACHE_HOME", nullptr};
    LinuxPaths paths_;
};

TEST_F(LinuxPathsOfAUser, AStartMakesAPrivateLibraryAndRemovesWhatAnEarlierRunHasLeft) {
    const std::string library = folder_ / "Library";
    writeFile(paths_.temporary() + "zi1234", "half an archive");
    const std::string other = writeFile(folder_ / ".cache/tavojoin/run/instance", "");
    for (const fs::perms mode : {fs::perms::owner_all, fs::perms{0755}}) { // an existing one is left alone
        EXPECT_TRUE(paths_.prepare());
        EXPECT_EQ(modeOf(library), mode);
        fs::permissions(library, fs::perms{0755});
    }
    EXPECT_TRUE(fs::is_empty(paths_.temporary()) && fs::exists(other));
    fs::remove(library);
    fs::create_symlink("nowhere", library);
    EXPECT_FALSE(paths_.prepare()); // nor does it throw
}

TEST_F(LinuxPathsOfAUser, WhatTheEnvironmentSaysIsTakenIfItIsAnAbsolutePathAndATemporaryFolderPrivate) {
    const auto pathFor = [this](const char* name, const std::string& given) {
        const EnvironmentVariable variable(name, given.c_str());
        return name == std::string("HOME") ? LinuxPaths().home() : paths_.temporary();
    };
    EXPECT_EQ(pathFor("HOME", "/home/ann//"), "/home/ann");
    const std::string fromPasswordEntry = pathFor("HOME", "");
    EXPECT_EQ(fromPasswordEntry.front(), '/');
    for (const char* home : {"ann", "./ann"})
        EXPECT_EQ(pathFor("HOME", home), fromPasswordEntry) << home;
    for (const char* ending : {"", "/", "//"})
        EXPECT_EQ(pathFor("TMPDIR", folder_.path() + ending), folder_.path() + "/");
    fs::permissions(folder_.path(), fs::perms{0755}); // others may look there, or put something there first
    for (const std::string& unfit : {folder_.path(), "tmp"s, folder_ / "missing"})
        EXPECT_EQ(pathFor("TMPDIR", unfit), folder_ / ".cache/tavojoin/tmp/") << unfit;
}

TEST_F(LinuxPathsOfAUser, InASharedCacheOurFoldersAreMadePrivateAndThoseOfOthersLeftAlone) {
    const std::string cache = folder_ / "shared";
    const EnvironmentVariable shared("XDG_CACHE_HOME", cache.c_str());
    shell(folder_.path(), "mkdir -m 700 precious; mkdir precious/tmp; touch precious/tmp/file");
    const auto expectRefusal = [this](const std::string& folder, const std::string& reason) {
        EXPECT_EQ(refusalOf([this] { paths_.temporary(); }),
                  "The folder " + folder + " cannot be used: " + reason);
        paths_.prepare();
    };
    for (const std::string& ours : {cache + "/tavojoin", cache + "/tavojoin/tmp"}) {
        shell(paths_.temporary(), "chmod 777 . ..");
        paths_.temporary();
        EXPECT_EQ(modeOf(ours), fs::perms::owner_all);
        shell(folder_.path(), "rm -r " + ours + "; ln -s \"$PWD/precious\" " + ours);
        expectRefusal(ours, "Not a directory");
        EXPECT_TRUE(fs::exists(folder_ / "precious/tmp/file")) << ours;
        fs::remove(ours);
    }
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can make what belongs to another user";
    shell(paths_.temporary(), "touch file; chown 65534:65534 ..");
    expectRefusal(cache + "/tavojoin", "it belongs to another user");
    EXPECT_TRUE(fs::exists(cache + "/tavojoin/tmp/file"));
}
