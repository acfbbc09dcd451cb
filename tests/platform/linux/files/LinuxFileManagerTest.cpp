#include "platform/linux/files/LinuxFileManager.h"

#include "support/OrdinaryUser.h"
#include "support/RecordingLog.h"
#include "support/RefusedSystemCall.h"
#include "support/TemporaryFolder.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace join::platform;
using namespace join::test;
using namespace std::string_literals;

namespace {

/// The mode and times of a file, folder or link.
std::vector<long> attributesOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return {status.st_mode, status.st_atim.tv_sec, status.st_atim.tv_nsec, status.st_mtim.tv_sec,
            status.st_mtim.tv_nsec};
}

class FileManagerOfLinux : public testing::Test {
protected:
    /// A file manager with the folder "root" as the system's, and a folder of a user.
    FileManagerOfLinux() { fs::create_directory(user_); }

    auto entries() const { return std::distance(fs::directory_iterator(user_), {}); }

    TemporaryFolder folder_;
    RecordingLog log_;
    LinuxFileManager files_{SystemRoot(folder_ / "root"), &log_};
    std::string user_ = folder_ / "user";
    std::string pipe_ = user_ + "/pipe";
};

} // namespace

TEST_F(FileManagerOfLinux, OnlyRegularFilesAreReadAndOnlyAbsolutePathsThatAreNotCutShortNameAnything) {
    const std::string file = writeFile(user_ + "/file", "x");
    ASSERT_EQ(::mkfifo(pipe_.c_str(), 0600), 0);
    const std::string nothing[] = {"", ".", file + "\0/../x"s};
    for (const std::string& path : nothing)
        EXPECT_FALSE(files_.exists(path) || files_.createFolder(path) || files_.create(path, "y") ||
                     files_.copy(path, user_ + "/copy") || files_.copy(file, path) || files_.remove(path))
            << path;
    for (const std::string& path :
         {nothing[0], nothing[1], nothing[2], user_, pipe_, user_ + "/missing", "/dev/zero"s})
        EXPECT_FALSE(files_.read(path) || files_.map(path) || files_.open(path) || files_.truncate(path))
            << path;
    EXPECT_EQ(contentsOf(file), "x");
}

TEST_F(FileManagerOfLinux, AFileIsReadWholeUpToTheLargestSizeAndMappedAndEmptiedWhereItIs) {
    const std::string path = writeFile(user_ + "/file", "a\0b"s);
    EXPECT_EQ(files_.read(path), "a\0b"s);
    const auto mapped = files_.map(path);
    ASSERT_TRUE(mapped);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(mapped->data()), mapped->size()), "a\0b"s);
    fs::create_hard_link(path, user_ + "/same");
    fs::resize_file(path, maximumReadSize);
    EXPECT_EQ(files_.read(path).value_or("").size(), maximumReadSize);
    fs::resize_file(path, maximumReadSize + 1);
    EXPECT_FALSE(files_.read(path));
    EXPECT_TRUE(files_.truncate(path));
    EXPECT_EQ(fs::file_size(user_ + "/same"), 0U);
    EXPECT_FALSE(files_.map(path));
}

TEST_F(FileManagerOfLinux, ACopyNeverReplacesAndAMadeFileReplacesAFileOrLinkAndNothingElse) {
    writeFile(user_ + "/file", "old");
    fs::create_symlink("file", user_ + "/link");
    fs::create_directory(user_ + "/folder");
    ASSERT_EQ(::mkfifo(pipe_.c_str(), 0600), 0);
    const std::string source = writeFile(folder_ / "source", "new");
    for (const char* target : {"/file", "/folder", "/folder/", "/link", ""})
        EXPECT_FALSE(files_.copy(source, user_ + target)) << target;
    EXPECT_EQ(log_.lines, std::vector<std::string>());
    for (const std::string name : {"link", "file"}) {
        EXPECT_TRUE(files_.create(user_ + "/" + name, name + " is new"));
        EXPECT_EQ(contentsOf(user_ + "/link"), "link is new");
        EXPECT_EQ(contentsOf(user_ + "/file"), name == "link" ? "old" : "file is new");
    }
    for (const char* path : {"/folder", "/pipe", "/missing/file"})
        EXPECT_FALSE(files_.create(user_ + path, "x")) << path;
    EXPECT_EQ(entries(), 4);
}

TEST_F(FileManagerOfLinux, AFileHasTheModeThatTheUserWantsAndAFolderIsMadeWithItsParentsAndClosedToOthers) {
    const mode_t before = ::umask(027);
    fs::create_directory(user_ + "/open");
    fs::create_directory_symlink("open", user_ + "/link");
    EXPECT_TRUE(files_.create(user_ + "/file", ""));
    for (const char* folder : {"/link", "/made/inside", "/made"})
        EXPECT_TRUE(files_.createFolder(user_ + folder));
    ::umask(before);
    EXPECT_EQ(fs::status(user_ + "/file").permissions(), fs::perms{0640});
    EXPECT_EQ(fs::status(user_ + "/open").permissions(), fs::perms{0750}); // through a link nothing changes
    EXPECT_TRUE(files_.createFolder(user_ + "/open"));
    for (const char* folder : {"/open", "/made/inside", "/made"})
        EXPECT_EQ(fs::status(user_ + folder).permissions(), fs::perms{0700}) << folder;
    EXPECT_FALSE(files_.createFolder(user_ + "/file") || files_.createFolder(user_ + "/file/folder"));
}

TEST_F(FileManagerOfLinux, WhatFailsLeavesWhatWasThereAloneAndTheReasonInTheLog) {
    const std::string large(100'000, 'x');
    const std::string old = writeFile(user_ + "/old", "old");
    const std::string file = writeFile(folder_ / "tree/large", large);
    fs::create_directories(folder_ / "with-pipe");
    ASSERT_EQ(::mkfifo((folder_ / "with-pipe/pipe").c_str(), 0600), 0);
    std::string deep = folder_ / "deep";
    for (int depth = 0; depth < 150; ++depth)
        deep += "/d";
    fs::create_directories(deep);
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit full{large.size() / 2, before.rlim_max}; // like a full disk: no file may grow beyond that
    std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &full), 0);
    for (const std::string& path : {old, user_ + "/new"})
        EXPECT_FALSE(files_.create(path, large)) << path;
    const std::tuple<bool, std::string, std::string, const char*> copies[] = {
        {false, file, user_ + "/copy", "File too large"},
        {false, folder_ / "tree", user_ + "/tree", "File too large"},
        {true, file, old, "File too large"},
        {false, folder_ / "missing", "/Applications/A.app", "No such file or directory"},
        {false, "/dev/zero", user_ + "/zero", "Invalid argument"},
        {false, folder_ / "with-pipe", user_ + "/with-pipe", "Invalid argument"},
        {false, folder_ / "tree", folder_ / "tree/itself", "Invalid argument"},
        {false, folder_ / "deep", folder_ / "deep/d/itself", "Invalid argument"},
        {false, folder_ / "deep", user_ + "/deep", "File name too long"}};
    for (const auto& [replaces, source, target, reason] : copies) {
        EXPECT_FALSE(replaces ? files_.replace(source, target) : files_.copy(source, target));
        EXPECT_EQ(log_.lines.back(), source + " could not be copied to " + target + " : " + reason);
    }
    ::setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(log_.lines.size(), std::size(copies));
    EXPECT_EQ(contentsOf(old), "old");
    EXPECT_EQ(entries(), 1);
}

TEST_F(FileManagerOfLinux, ACopyKeepsModesTimesAndLinksButNoRightsOfOthersToLendOrChange) {
    const OrdinaryUser user;
    const std::string from = folder_ / "from";
    const std::string to = user_ + "/to";
    writeFile(from + "/sealed/file", "content");
    writeFile(from + "/empty", "");
    writeFile(from + "/open", "");
    fs::create_symlink("/etc/passwd", from + "/absolute");
    fs::create_symlink("../../nowhere", from + "/dangling");
    fs::create_directory_symlink(".", from + "/loop");
    ::chmod((from + "/empty").c_str(), 0604);
    ::chmod((from + "/open").c_str(), 06777);
    ::chmod((from + "/sealed/file").c_str(), 0451);
    ::chmod((from + "/sealed").c_str(), 0555);
    const char* names[] = {"/sealed/file", "/empty", "/absolute", "/dangling", "/loop", "/sealed", ""};
    std::vector<std::vector<long>> expected;
    for (long second = 1'000'000'000; const char* name : names) {
        // Times that no clock would give.
        const timespec times[] = {{++second, 123456789}, {second + 1, 987654321}};
        ASSERT_EQ(::utimensat(AT_FDCWD, (from + name).c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
        expected.push_back(attributesOf(from + name));
    }

    ASSERT_TRUE(files_.copy(from, to));
    ASSERT_TRUE(files_.copy(from + "/absolute", user_ + "/link"));
    ASSERT_TRUE(files_.copy("/proc/self/cmdline", user_ + "/size unknown"));

    for (auto attributes = expected.begin(); const char* name : names)
        EXPECT_EQ(attributesOf(to + name), *attributes++) << name;
    EXPECT_EQ(fs::status(to + "/open").permissions(), fs::perms{0755});
    EXPECT_EQ(contentsOf(to + "/sealed/file"), "content");
    EXPECT_EQ(contentsOf(user_ + "/size unknown"), contentsOf("/proc/self/cmdline"));
    for (const std::string& link : {to + "/absolute", user_ + "/link"})
        EXPECT_EQ(fs::read_symlink(link), "/etc/passwd");
    EXPECT_EQ(fs::read_symlink(to + "/dangling"), "../../nowhere");
    EXPECT_TRUE(files_.remove(from) && files_.remove(to));
}

TEST_F(FileManagerOfLinux, WhatIsInstalledFromAVolumeIsSharedWithItIfOnlyWeCanChangeIt) {
    const std::string volume = folder_ / "root/Volumes/V";
    const std::string own = writeFile(volume + "/A.app/own", "x");
    const std::string open = writeFile(volume + "/A.app/open", "x");
    ASSERT_EQ(::chmod(open.c_str(), 0666), 0);
    const std::string outside = writeFile(folder_ / "outside/own", "x");
    fs::create_directory_symlink(folder_ / "outside", folder_ / "root/Volumes/link");
    EXPECT_TRUE(files_.install("/Volumes/V/A.app", user_ + "/installed"));
    EXPECT_TRUE(files_.installFromVolume("/Volumes/V/A.app", user_ + "/shared"));
    EXPECT_TRUE(files_.installFromVolume("/Volumes/V/A.app", user_ + "/second")); // never with two
    EXPECT_TRUE(files_.installFromVolume("/Volumes/link/own", user_ + "/linked"));
    EXPECT_TRUE(fs::equivalent(own, user_ + "/shared/own"));
    EXPECT_EQ(fs::hard_link_count(own), 2U);
    EXPECT_EQ(fs::hard_link_count(open), 1U);
    EXPECT_EQ(fs::hard_link_count(outside), 1U);
    EXPECT_TRUE(files_.remove("/Volumes/V"));
    for (const char* file : {"/installed/own", "/shared/own", "/shared/open", "/second/own", "/linked"})
        EXPECT_EQ(contentsOf(user_ + file), "x") << file;
}

TEST_F(FileManagerOfLinux, AReplacementTakesThePlaceOfAnything) {
    const std::string outside = writeFile(folder_ / "outside/file", "x");
    constexpr unsigned none = ~0U;
    for (const unsigned refused : {none, unsigned{SYS_renameat2}}) // as some file systems do
        withoutSystemCall(refused, EINVAL, [&, this] {
            const std::string source = fs::path(writeFile(folder_ / "new/file", "new")).parent_path();
            writeFile(user_ + "/file", "old");
            writeFile(user_ + "/folder/inner/file", "old");
            fs::create_directory_symlink(folder_ / "outside", user_ + "/link");
            for (const char* target : {"/file", "/folder", "/link", "/none"}) {
                EXPECT_TRUE(files_.replace(source, user_ + target)) << target;
                EXPECT_TRUE(fs::is_directory(fs::symlink_status(user_ + target))) << target;
                EXPECT_EQ(contentsOf(user_ + target + "/file"), "new") << target;
            }
            EXPECT_TRUE(files_.replace(user_ + "/folder", user_ + "/folder")); // by itself
            EXPECT_EQ(contentsOf(user_ + "/folder/file"), "new");
            EXPECT_FALSE(files_.replace(folder_ / "missing", user_ + "/folder"));
            EXPECT_EQ(entries(), 4);
            fs::remove_all(user_);
            fs::create_directory(user_);
        });
    EXPECT_EQ(contentsOf(outside), "x");
}

TEST_F(FileManagerOfLinux, WhatCannotBeDeletedIsOutOfTheWayAndWhatCannotBeMovedStays) {
    const std::string source = writeFile(folder_ / "new", "new");
    const std::string bundle = user_ + "/A.app";
    for (const bool isReplaced : {true, false}) {
        writeFile(bundle + "/Contents/file", "old");
        withoutSystemCall(SYS_unlinkat, EACCES, [&, this] { // as if it belonged to another user
            EXPECT_TRUE(isReplaced || files_.remove(bundle));
            EXPECT_TRUE(files_.replace(source, bundle));
        });
        EXPECT_TRUE(files_.replace(source, bundle));
        EXPECT_EQ(contentsOf(bundle), "new");
        EXPECT_TRUE(files_.remove(bundle));
        EXPECT_EQ(entries(), isReplaced ? 1 : 2); // hidden
    }
    writeFile(bundle + "/Contents/file", "old");
    ASSERT_EQ(::chmod(user_.c_str(), 0555), 0);
    const OrdinaryUser user;
    EXPECT_FALSE(files_.replace(source, bundle) || files_.remove(bundle));
    EXPECT_EQ(contentsOf(bundle + "/Contents/file"), "old");
    ASSERT_EQ(::chmod(user_.c_str(), 0755), 0);
}

TEST_F(FileManagerOfLinux, ATreeIsRemovedAtOnceWhateverItsModesAndWithoutWhatItsLinksLeadTo) {
    const OrdinaryUser user;
    const std::string tree = user_ + "/tree";
    writeFile(folder_ / "outside/file", "x");
    for (const mode_t mode : {0755U, 0555U, 0400U, 0300U, 0U}) {
        writeFile(tree + "/inner/file", "x");
        fs::create_directory_symlink(folder_ / "outside", tree + "/inner/link");
        ::chmod((tree + "/inner").c_str(), mode);
        ::chmod(tree.c_str(), mode);
        EXPECT_TRUE(files_.remove(tree)) << mode;
        EXPECT_EQ(entries(), 0) << mode;
    }
    fs::create_directory_symlink(folder_ / "outside", tree);
    EXPECT_TRUE(files_.remove(tree));
    EXPECT_FALSE(files_.remove(tree));
    EXPECT_EQ(contentsOf(folder_ / "outside/file"), "x");
}
