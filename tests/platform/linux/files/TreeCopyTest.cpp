#include "platform/linux/files/TreeCopy.h"

#include "support/OrdinaryUser.h"
#include "support/TemporaryFolder.h"

#include <array>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace join::platform;
using namespace join::test;
namespace fs = std::filesystem;

namespace {

/// The mode and times of a file, folder or link.
std::string attributesOf(const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0)
        return "missing";
    std::string text;
    for (const long number : {long{status.st_mode}, status.st_atim.tv_sec, status.st_atim.tv_nsec,
                              status.st_mtim.tv_sec, status.st_mtim.tv_nsec})
        text += std::to_string(number) + " ";
    return text;
}

} // namespace

TEST(TreeCopy, KeepsModesTimesAndLinksOfFoldersThatCannotBeWrittenTo) {
    const OrdinaryUser user;
    const TemporaryFolder folder;
    writeFile(folder / "from/sealed/file", "content");
    writeFile(folder / "from/empty", "");
    fs::create_symlink("/etc/passwd", folder / "from/absolute");
    fs::create_symlink("../../nowhere", folder / "from/dangling");
    fs::create_directory_symlink(".", folder / "from/loop");
    ::chmod((folder / "from/empty").c_str(), 0604);
    ::chmod((folder / "from/sealed/file").c_str(), 0451);
    ::chmod((folder / "from/sealed").c_str(), 0555);
    const char* names[] = {"/sealed/file", "/empty", "/absolute", "/dangling", "/loop", "/sealed", ""};
    std::vector<std::string> expected;
    for (long second = 1'000'000'000; const char* name : names) {
        // Times that no clock would give.
        const std::array<timespec, 2> times{timespec{++second, 123456789}, timespec{second + 1, 987654321}};
        ASSERT_EQ(::utimensat(AT_FDCWD, (folder / "from" + name).c_str(), times.data(), AT_SYMLINK_NOFOLLOW),
                  0);
        expected.push_back(attributesOf(folder / "from" + name));
    }

    ASSERT_TRUE(copyTree(folder / "from", folder / "to"));
    ASSERT_TRUE(copyTree(folder / "from/absolute", folder / "link"));

    for (auto attributes = expected.begin(); const char* name : names)
        EXPECT_EQ(attributesOf(folder / "to" + name), *attributes++) << name;
    EXPECT_EQ(contentsOf(folder / "to/sealed/file"), "content");
    for (const char* link : {"to/absolute", "link"})
        EXPECT_EQ(fs::read_symlink(folder / link), "/etc/passwd");
    EXPECT_EQ(fs::read_symlink(folder / "to/dangling"), "../../nowhere");
    for (const char* sealed : {"from/sealed", "to/sealed"})
        ::chmod((folder / sealed).c_str(), 0755);
}

TEST(TreeCopy, DropsTheBitsThatWouldLendAnotherUsersRightsOrLetOthersWrite) {
    const TemporaryFolder folder;
    ASSERT_EQ(::chmod(writeFile(folder / "from", "x").c_str(), 06777), 0);
    ASSERT_TRUE(copyTree(folder / "from", folder / "to"));
    EXPECT_EQ(fs::status(folder / "to").permissions(), fs::perms{0755});
}

TEST(TreeCopy, CopiesFilesWhoseSizeTheSystemDoesNotTell) {
    const TemporaryFolder folder;
    ASSERT_TRUE(copyTree("/proc/self/cmdline", folder / "to"));
    EXPECT_EQ(contentsOf(folder / "to"), contentsOf("/proc/self/cmdline"));
}

TEST(TreeCopy, RefusesWhatIsNeitherFileNorFolderNorLinkAndWhatHasNoEnd) {
    const TemporaryFolder folder;
    fs::create_directories(folder / "with-pipe/inner");
    ASSERT_EQ(::mkfifo((folder / "with-pipe/inner/pipe").c_str(), 0600), 0);
    fs::create_directories(folder / "into-itself/inner");
    std::string deep = folder / "deep";
    for (int depth = 0; depth < 150; ++depth)
        deep += "/d";
    fs::create_directories(deep);
    const std::pair<std::string, std::string> cases[] = {
        {folder / "with-pipe", folder / "copy1"},
        {"/dev/zero", folder / "copy2"},
        {folder / "into-itself", folder / "into-itself/copy"},
        {folder / "into-itself", folder / "into-itself/inner/copy"},
        {folder / "deep", folder / "copy3"},
        {folder / "missing", folder / "copy4"}};
    for (const auto& [source, target] : cases)
        EXPECT_FALSE(copyTree(source, target)) << source;
}
