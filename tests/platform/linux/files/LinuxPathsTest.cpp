#include "platform/linux/files/LinuxPaths.h"

#include "platform/Exception.h"
#include "platform/linux/files/SystemRoot.h"
#include "support/Environment.h"
#include "support/TemporaryFolder.h"

#include <array>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace join::platform;
using namespace join::test;
namespace fs = std::filesystem;

namespace {

fs::perms modeOf(const std::string& path) { return fs::status(path).permissions(); }

/// A user whose home is a fresh folder, and who has set nothing else.
class LinuxPathsOfAUser : public testing::Test {
protected:
    TemporaryFolder folder_;
    EnvironmentVariable home_{"HOME", folder_.path().c_str()};
    EnvironmentVariable temporary_{"TMPDIR", nullptr};
    EnvironmentVariable cache_{"XDG_CACHE_HOME", nullptr};
    LinuxPaths paths_;
};

} // namespace

TEST_F(LinuxPathsOfAUser, TheLibraryIsMadePrivateAndAnExistingOneIsLeftAlone) {
    EXPECT_TRUE(paths_.prepare());
    EXPECT_EQ(modeOf(paths_.userLibrary()), fs::perms::owner_all);
    ::chmod(paths_.userLibrary().c_str(), 0755);
    EXPECT_TRUE(paths_.prepare());
    EXPECT_EQ(modeOf(paths_.userLibrary()), fs::perms{0755});
    fs::remove(paths_.userLibrary());
    fs::create_symlink("nowhere", paths_.userLibrary());
    EXPECT_FALSE(paths_.prepare()); // nor does it throw
}

TEST_F(LinuxPathsOfAUser, ABundleInAnApplicationsFolderIsThereWhateverLinksLeadThere) {
    const std::string home = paths_.home();
    const std::string ofSystem = home + "/share/root/Applications";
    for (const std::string& folder : {ofSystem, home + "/user", home + "/elsewhere"})
        fs::create_directories(folder);
    fs::create_directory_symlink(".", home + "/link");
    const SystemRoot root(home + "/link/share/root");
    using Case = std::array<std::string, 3>;
    for (const auto& [folder, ofUserLeadsTo, known] :
         {Case{ofSystem, "user", "/Applications"}, Case{home + "/user", "user", home + "/Applications"},
          Case{ofSystem, ofSystem, "/Applications"}, Case{home + "/elsewhere", "user", home + "/elsewhere"},
          Case{home + "/elsewhere", "nowhere", home + "/elsewhere"},
          Case{home + "/elsewhere", "Applications", home + "/elsewhere"}}) {
        fs::create_directory_symlink(ofUserLeadsTo, home + "/Applications");
        EXPECT_EQ(paths_.bundlePath(folder + "/Join.app", root), known + "/Join.app") << ofUserLeadsTo;
        fs::remove(home + "/Applications");
    }
    fs::remove(ofSystem);
    fs::create_directory_symlink(home + "/elsewhere", ofSystem);
    EXPECT_EQ(paths_.bundlePath(home + "/elsewhere/Join.app", root), "/Applications/Join.app");
}

TEST_F(LinuxPathsOfAUser, WhatAnEarlierRunHasLeftInItsTemporaryFolderGoesAtTheStart) {
    writeFile(paths_.temporary() + "zi1234", "half an archive");
    const std::string other = writeFile(folder_ / ".cache/tavojoin/run/instance", "");
    paths_.prepare();
    EXPECT_TRUE(fs::is_empty(paths_.temporary()));
    EXPECT_TRUE(fs::exists(other));
}

TEST_F(LinuxPathsOfAUser, AHomeThatIsNoAbsolutePathIsTakenFromThePasswordEntry) {
    EXPECT_EQ(paths_.home(), folder_.path());
    const EnvironmentVariable unset("HOME", nullptr);
    const std::string fromPasswordEntry = LinuxPaths().home();
    EXPECT_EQ(fromPasswordEntry.front(), '/');
    for (const char* home : {"", "ann", "./ann"}) {
        const EnvironmentVariable odd("HOME", home);
        EXPECT_EQ(LinuxPaths().home(), fromPasswordEntry) << home;
    }
    const EnvironmentVariable slashes("HOME", "/home/ann//");
    EXPECT_EQ(LinuxPaths().home(), "/home/ann");
}

TEST_F(LinuxPathsOfAUser, TheTemporaryFolderGivenByTheEnvironmentEndsWithOneSeparator) {
    for (const char* ending : {"", "/", "//"}) {
        const EnvironmentVariable given("TMPDIR", (folder_.path() + ending).c_str());
        EXPECT_EQ(paths_.temporary(), folder_.path() + "/");
    }
    ::chmod(folder_.path().c_str(),
            0755); // nothing of ours lies where others may look, or put something first
    for (const std::string& unfit : {folder_.path(), std::string("tmp"), folder_ / "missing"}) {
        const EnvironmentVariable given("TMPDIR", unfit.c_str());
        EXPECT_EQ(paths_.temporary(), folder_ / ".cache/tavojoin/tmp/") << unfit;
    }
}

TEST_F(LinuxPathsOfAUser, InASharedCacheOurFoldersAreMadePrivateAndThoseOfOthersLeftAlone) {
    const std::string cache = folder_ / "shared";
    const EnvironmentVariable shared("XDG_CACHE_HOME", cache.c_str());
    const std::string file = "/tmp/file";
    writeFile(folder_ / "precious" + file, "x");
    ::chmod((folder_ / "precious").c_str(), 0700);
    for (const char* name : {"/tavojoin", "/tavojoin/tmp"}) {
        ::chmod(paths_.temporary().c_str(), 0777);
        ::chmod((cache + "/tavojoin").c_str(), 0777);
        paths_.temporary();
        EXPECT_EQ(modeOf(cache + name), fs::perms::owner_all);
        fs::remove_all(cache + name);
        fs::create_directory_symlink(folder_ / "precious", cache + name);
        EXPECT_THROW(paths_.temporary(), Exception);
        paths_.prepare();
        EXPECT_TRUE(fs::exists(folder_ / "precious" + file)) << name;
        fs::remove(cache + name);
        if (::geteuid() != 0) // only root can make a folder that belongs to another user
            continue;
        writeFile(cache + "/tavojoin" + file, "x");
        ::chmod((cache + "/tavojoin").c_str(), 0700);
        ASSERT_EQ(::chown((cache + name).c_str(), 65534, 65534), 0);
        EXPECT_THROW(paths_.temporary(), Exception);
        paths_.prepare();
        EXPECT_EQ(fs::exists(cache + "/tavojoin" + file), name == std::string("/tavojoin"));
        fs::remove_all(cache);
    }
}
