#include "platform/linux/LinuxPaths.h"

#include "platform/Exception.h"
#include "support/Environment.h"
#include "support/TemporaryFolder.h"

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
    paths_.prepare();
    EXPECT_EQ(modeOf(paths_.userLibrary()), fs::perms::owner_all);
    ::chmod(paths_.userLibrary().c_str(), 0755);
    paths_.prepare();
    EXPECT_EQ(modeOf(paths_.userLibrary()), fs::perms{0755});
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

TEST_F(LinuxPathsOfAUser, TheTemporaryFolderIsMadePrivateAgain) {
    ::chmod(paths_.temporary().c_str(), 0777);
    EXPECT_EQ(modeOf(paths_.temporary()), fs::perms::owner_all);
}

TEST_F(LinuxPathsOfAUser, ATemporaryFolderThatSomebodyElseMayHaveMadeIsRefused) {
    fs::create_directories(folder_ / ".cache/tavojoin");
    fs::create_directory_symlink(folder_.path(), folder_ / ".cache/tavojoin/tmp");
    EXPECT_THROW(paths_.temporary(), Exception);
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can make a folder that belongs to another user";
    fs::remove(folder_ / ".cache/tavojoin/tmp");
    ASSERT_EQ(::chown(paths_.temporary().c_str(), 65534, 65534), 0);
    EXPECT_THROW(paths_.temporary(), Exception);
}
