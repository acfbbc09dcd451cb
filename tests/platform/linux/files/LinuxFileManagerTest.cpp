#include "platform/linux/files/LinuxFileManager.h"

#include "support/OrdinaryUser.h"
#include "support/RecordingLog.h"
#include "support/RefusedSystemCall.h"
#include "support/TemporaryFolder.h"

#include <csignal>
#include <filesystem>
#include <future>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace join::platform;
using namespace join::test;
namespace fs = std::filesystem;

namespace {

class FileManagerOfLinux : public testing::Test {
protected:
    /// A file manager with the folder "root" as the system's, and a folder of a user.
    FileManagerOfLinux() { fs::create_directory(user_); }

    void expectNoFile(const std::string& path) {
        EXPECT_FALSE(files_.read(path) || files_.map(path) || files_.open(path) || files_.truncate(path))
            << path;
    }
    auto entries() const { return std::distance(fs::directory_iterator(user_), {}); }

    TemporaryFolder folder_;
    RecordingLog log_;
    LinuxFileManager files_{SystemRoot(folder_ / "root"), &log_};
    std::string user_ = folder_ / "user";
};

} // namespace

TEST_F(FileManagerOfLinux, TheSystemsFoldersAreBelowTheSystemRoot) {
    EXPECT_TRUE(files_.createFolder("/Applications/A.app"));
    EXPECT_TRUE(files_.create("/Applications/A.app/file", "x"));
    EXPECT_EQ(contentsOf(folder_ / "root/Applications/A.app/file"), "x");
    EXPECT_TRUE(files_.copy("/Applications/A.app", user_ + "/B.app"));
    EXPECT_EQ(files_.read(user_ + "/B.app/file"), "x");
    EXPECT_TRUE(files_.remove("/Applications/A.app"));
    EXPECT_FALSE(files_.exists("/Applications/A.app"));
}

TEST_F(FileManagerOfLinux, APathThatIsNotAbsoluteOrWouldBeCutShortNamesNothing) {
    const std::string file = writeFile(user_ + "/file", "x");
    for (const std::string& path : {std::string(), std::string("."), file + std::string("\0/../x", 6)}) {
        expectNoFile(path);
        EXPECT_FALSE(files_.exists(path) || files_.createFolder(path) || files_.create(path, "y") ||
                     files_.copy(path, user_ + "/copy") || files_.copy(file, path) || files_.remove(path))
            << path;
    }
    EXPECT_EQ(contentsOf(file), "x");
}

TEST_F(FileManagerOfLinux, AFolderIsMadeWithItsParentsUnlessAFileIsInTheWay) {
    for (int time = 0; time < 2; ++time)
        EXPECT_TRUE(files_.createFolder(user_ + "/a/b/c"));
    const std::string file = writeFile(user_ + "/a/file", "");
    EXPECT_FALSE(files_.createFolder(file) || files_.createFolder(file + "/b"));
}

TEST_F(FileManagerOfLinux, OnlyRegularFilesAreReadMappedAndTruncated) {
    ASSERT_EQ(::mkfifo((user_ + "/pipe").c_str(), 0600), 0);
    for (const auto& path : {user_, user_ + "/pipe", user_ + "/missing", std::string("/dev/zero")})
        expectNoFile(path);
}

TEST_F(FileManagerOfLinux, AFileIsReadWholeUpToTheLargestSize) {
    const std::string path = writeFile(user_ + "/file", std::string("a\0b", 3));
    EXPECT_EQ(files_.read(path), std::string("a\0b", 3));
    fs::resize_file(path, maximumReadSize);
    EXPECT_EQ(files_.read(path).value_or("").size(), maximumReadSize);
    fs::resize_file(path, maximumReadSize + 1);
    EXPECT_FALSE(files_.read(path));
}

TEST_F(FileManagerOfLinux, AFileThatIsMappedOrTruncatedIsTheFileItselfAndAnEmptyOneIsNotMapped) {
    const std::string path = writeFile(user_ + "/file", "bytes");
    const auto mapped = files_.map(path);
    ASSERT_TRUE(mapped);
    EXPECT_EQ(std::string_view(reinterpret_cast<const char*>(mapped->data()), mapped->size()), "bytes");
    fs::create_hard_link(path, user_ + "/same");
    EXPECT_TRUE(files_.truncate(path));
    EXPECT_EQ(fs::file_size(user_ + "/same"), 0U);
    EXPECT_FALSE(files_.map(path));
}

TEST_F(FileManagerOfLinux, AMadeFileReplacesAFileOrLinkAndNothingElse) {
    writeFile(user_ + "/file", "old");
    fs::create_symlink("file", user_ + "/link");
    fs::create_directory(user_ + "/folder");
    ASSERT_EQ(::mkfifo((user_ + "/pipe").c_str(), 0600), 0);
    for (const std::string name : {"link", "file"}) {
        EXPECT_TRUE(files_.create(user_ + "/" + name, name + " is new"));
        EXPECT_EQ(contentsOf(user_ + "/link"), "link is new");
        EXPECT_EQ(contentsOf(user_ + "/file"), name == "link" ? "old" : "file is new");
    }
    for (const char* path : {"/folder", "/pipe", "/missing/file"})
        EXPECT_FALSE(files_.create(user_ + path, "x")) << path;
    EXPECT_EQ(entries(), 4);
}

TEST_F(FileManagerOfLinux, AFileHasTheModeThatTheUserWantsForFilesAndAFolderIsClosedToOthers) {
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
}

TEST_F(FileManagerOfLinux, OnAFullDiskTheOldFileStaysAndNothingElseIsLeft) {
    const std::string large(100'000, 'x');
    const std::string old = writeFile(user_ + "/old", "old");
    const std::string file = writeFile(folder_ / "tree/large", large);
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit full{large.size() / 2, before.rlim_max}; // no file may grow beyond that
    std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &full), 0);
    for (const std::string& path : {old, user_ + "/new"})
        EXPECT_FALSE(files_.create(path, large)) << path;
    const std::tuple<bool, std::string, std::string, const char*> copies[] = {
        {false, file, user_ + "/copy", "File too large"},
        {false, folder_ / "tree", user_ + "/tree", "File too large"},
        {true, file, old, "File too large"},
        {false, folder_ / "missing", "/Applications/A.app", "No such file or directory"},
        {false, "/dev/null", user_ + "/null", "Invalid argument"}};
    for (const auto& [replaces, source, target, reason] : copies) {
        EXPECT_FALSE(replaces ? files_.replace(source, target) : files_.copy(source, target));
        EXPECT_EQ(log_.lines.back(), source + " could not be copied to " + target + " : " + reason);
    }
    ::setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(log_.lines.size(), std::size(copies));
    EXPECT_EQ(contentsOf(old), "old");
    EXPECT_EQ(entries(), 1);
}

TEST_F(FileManagerOfLinux, ACopyFailsWhenAnythingStandsAtTheTarget) {
    const std::string source = writeFile(folder_ / "source", "new");
    writeFile(user_ + "/file", "old");
    fs::create_directory(user_ + "/folder");
    fs::create_symlink("nowhere", user_ + "/link");
    for (const char* target : {"/file", "/folder", "/folder/", "/link", ""})
        EXPECT_FALSE(files_.copy(source, user_ + target)) << target;
    EXPECT_EQ(log_.lines, std::vector<std::string>());
    EXPECT_EQ(contentsOf(user_ + "/file"), "old");
    EXPECT_EQ(entries(), 3);
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

TEST_F(FileManagerOfLinux, WhatAnotherUserHasWrittenInOurFolderIsOutOfTheWay) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can make what belongs to another user";
    const std::string source = writeFile(folder_ / "new", "new");
    const std::string bundle = user_ + "/A.app";
    const auto giveAway = [](const std::string& path) { ASSERT_EQ(::chown(path.c_str(), 1, 1), 0); };
    for (const bool isReplaced : {true, false}) {
        writeFile(bundle + "/Contents/file", "old");
        giveAway(bundle + "/Contents");
        giveAway(bundle);
        const OrdinaryUser user;
        EXPECT_TRUE(isReplaced || files_.remove(bundle));
        for (int time = 0; time < 2; ++time)
            EXPECT_TRUE(files_.replace(source, bundle));
        EXPECT_EQ(contentsOf(bundle), "new");
        EXPECT_TRUE(files_.remove(bundle));
    }
    EXPECT_EQ(entries(), 2); // hidden
    // Where nothing can be made or moved, everything stays as it was.
    writeFile(bundle + "/Contents/file", "old");
    giveAway(user_);
    const OrdinaryUser user;
    EXPECT_FALSE(files_.replace(source, bundle) || files_.remove(bundle));
    EXPECT_EQ(contentsOf(bundle + "/Contents/file"), "old");
}

TEST_F(FileManagerOfLinux, RemovingATreeSparesWhatItsLinksLeadTo) {
    writeFile(folder_ / "outside/file", "x");
    fs::create_directory_symlink(folder_ / "outside", user_ + "/link");
    fs::create_directories(user_ + "/tree/inner");
    fs::create_directory_symlink(folder_ / "outside", user_ + "/tree/inner/link");
    EXPECT_TRUE(files_.remove(user_ + "/tree"));
    EXPECT_TRUE(files_.remove(user_ + "/link"));
    EXPECT_FALSE(files_.remove(user_ + "/link"));
    EXPECT_EQ(entries(), 0);
    EXPECT_EQ(contentsOf(folder_ / "outside/file"), "x");
}

TEST_F(FileManagerOfLinux, AFolderThatIsRemovedIsNeverSeenInPart) {
    constexpr int files = 3000;
    const std::string tree = user_ + "/tree";
    for (int number = 0; number < files; ++number)
        writeFile(tree + "/" + std::to_string(number), "");
    const auto removal = std::async(std::launch::async, [&] { EXPECT_TRUE(files_.remove(tree)); });
    for (std::error_code error; fs::exists(tree);) {
        int seen = 0;
        for (fs::directory_iterator entry(tree, error); !error && entry != fs::directory_iterator();
             entry.increment(error))
            ++seen;
        EXPECT_TRUE(seen == files || !fs::exists(tree)) << seen;
    }
}

TEST_F(FileManagerOfLinux, RemovesTreesWhoseModesKeepTheirOwnerOut) {
    const OrdinaryUser user;
    for (const mode_t mode : {0555U, 0400U, 0300U, 0U}) {
        writeFile(user_ + "/tree/inner/file", "x");
        ::chmod((user_ + "/tree/inner").c_str(), mode);
        ::chmod((user_ + "/tree").c_str(), mode);
        EXPECT_TRUE(files_.remove(user_ + "/tree")) << mode;
        EXPECT_FALSE(fs::exists(user_ + "/tree")) << mode;
    }
}
