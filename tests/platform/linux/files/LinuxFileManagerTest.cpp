#include "platform/linux/files/LinuxFileManager.h"

#include "platform/linux/files/StagedPath.h"
#include "support/Child.h"
#include "support/OrdinaryUser.h"
#include "support/RecordingLog.h"
#include "support/RefusedSystemCall.h"
#include "support/TemporaryFolder.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace join::platform;
using namespace join::test;
using namespace std::string_literals;

class FileManagerOfLinux : public testing::Test {
protected:
    /// A file manager with the folder "root" as the system's, and a folder of a user.
    FileManagerOfLinux() { fs::create_directory(user_); }

    TemporaryFolder folder_;
    RecordingLog log_;
    LinuxFileManager files_{SystemRoot(folder_ / "root"), &log_};
    std::string user_ = folder_ / "user";
};

TEST_F(FileManagerOfLinux, OnlyRegularFilesAreReadAndOnlyAbsolutePathsThatAreNotCutShortNameAnything) {
    const std::string file = writeFile(user_ + "/file", "a\0b"s);
    shell(user_, "ln file same; mkfifo pipe");
    const std::string nothing[] = {"", ".", file + "\0/../x"s};
    for (const std::string& path : nothing)
        EXPECT_FALSE(files_.exists(path) || files_.createFolder(path) || files_.create(path, "y") ||
                     files_.copy(path, user_ + "/copy") || files_.copy(file, path) || files_.remove(path))
            << path;
    for (const std::string& path :
         {nothing[0], nothing[1], nothing[2], user_, user_ + "/pipe", user_ + "/missing", "/dev/zero"s})
        EXPECT_FALSE(files_.read(path) || files_.map(path) || files_.open(path) || files_.truncate(path))
            << path;
    EXPECT_EQ(files_.read(file), "a\0b"s);
    const auto mapped = files_.map(file);
    ASSERT_TRUE(mapped);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(mapped->data()), mapped->size()), "a\0b"s);
    fs::resize_file(file, maximumReadSize);
    EXPECT_EQ(files_.read(file).value_or("").size(), maximumReadSize);
    fs::resize_file(file, maximumReadSize + 1);
    EXPECT_FALSE(files_.read(file));
    EXPECT_TRUE(files_.truncate(file));
    EXPECT_EQ(fs::file_size(user_ + "/same"), 0U); // emptied, not replaced
    EXPECT_FALSE(files_.map(file));
}

TEST_F(FileManagerOfLinux, ACopyNeverReplacesAndAMadeFileReplacesAFileOrLinkAndNothingElse) {
    shell(user_, "printf old > file; ln -s file link; mkdir folder; mkfifo pipe");
    const std::string source = writeFile(folder_ / "source", "new");
    for (const char* target : {"/file", "/folder", "/folder/", "/link", ""})
        EXPECT_FALSE(files_.copy(source, user_ + target)) << target;
    EXPECT_EQ(log_.lines, std::vector<std::string>());
    for (const std::string name : {"link", "file"}) {
        EXPECT_TRUE(files_.create(user_ + "/" + name, name + " is new"));
        EXPECT_EQ(contentsOf(user_ + "/link"), "link is new");
        EXPECT_EQ(contentsOf(user_ + "/file"), name == "link" ? "old" : "file is new");
    }
    const auto make = [this] { // as on a file system where files need names
        ASSERT_EQ(::open(user_.c_str(), O_TMPFILE | O_WRONLY, 0600), -1);
        EXPECT_TRUE(files_.create(user_ + "/file", "made with a name"));
    };
    withoutSystemCall(SYS_openat, EOPNOTSUPP, make, O_TMPFILE & ~O_DIRECTORY);
    EXPECT_EQ(contentsOf(user_ + "/file"), "made with a name");
    for (const char* path : {"/folder", "/pipe", "/missing/file"})
        EXPECT_FALSE(files_.create(user_ + path, "x")) << path;
    EXPECT_EQ(countIn(user_), 4);
}

TEST_F(FileManagerOfLinux, AFileHasTheModeThatTheUserWantsAndAFolderIsMadeWithItsParentsAndClosedToOthers) {
    const mode_t before = ::umask(027);
    shell(user_, "mkdir open linked; ln -s linked link");
    EXPECT_TRUE(files_.create(user_ + "/file", ""));
    for (const char* folder : {"/link", "/open", "/made/inside", "/made"})
        EXPECT_TRUE(files_.createFolder(user_ + folder));
    ::umask(before);
    EXPECT_EQ(shell(user_, "stat -c '%a %n' file linked open made made/inside"), // no change through a link
              "640 file\n750 linked\n700 open\n700 made\n700 made/inside\n");
    EXPECT_FALSE(files_.createFolder(user_ + "/file") || files_.createFolder(user_ + "/file/folder"));
}

TEST_F(FileManagerOfLinux, WhatFailsLeavesWhatWasThereAloneAndTheReasonInTheLog) {
    const std::string large(100'000, 'x');
    const std::string old = writeFile(user_ + "/old", "old");
    const std::string file = writeFile(folder_ / "tree/large", large);
    shell(folder_.path(), "mkdir -p with-pipe deep/$(printf d/%.0s $(seq 150)); mkfifo with-pipe/pipe");
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit full{large.size() / 2, before.rlim_max}; // like a full disk: no file may grow beyond that
    std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &full), 0);
    for (const std::string& path : {old, user_ + "/new"})
        EXPECT_FALSE(files_.create(path, large)) << path;
    const std::tuple<bool, std::string, std::string, const char*> copies[] = {
        {false, folder_ / "tree", user_ + "/tree", "File too large"},
        {true, file, old, "File too large"},
        {false, folder_ / "missing", "/Applications/A.app", "No such file or directory"},
        {false, folder_ / "with-pipe", user_ + "/with-pipe", "Invalid argument"},
        {false, folder_ / "deep", folder_ / "deep/d/itself", "Invalid argument"},
        {false, folder_ / "deep", user_ + "/deep", "File name too long"}};
    for (const auto& [replaces, source, target, reason] : copies) {
        EXPECT_FALSE(replaces ? files_.replace(source, target) : files_.copy(source, target));
        EXPECT_EQ(log_.lines.back(), source + " could not be copied to " + target + " : " + reason);
    }
    ::setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(log_.lines.size(), std::size(copies));
    EXPECT_EQ(contentsOf(old), "old");
    EXPECT_EQ(countIn(user_), 1);
}

TEST_F(FileManagerOfLinux, ACopyKeepsModesTimesAndLinksButNoRightsOfOthersToLendOrChange) {
    const OrdinaryUser user;
    const std::string names = "sealed/file empty open absolute dangling loop sealed .";
    const std::string listing = "stat -c '%n %A %x %y' " + names; // reads nothing: that would be a new time
    shell(folder_.path(), R"(
        mkdir -p from/sealed; cd from; echo content > sealed/file; touch empty open
        ln -s /etc/passwd absolute; ln -s ../../nowhere dangling; ln -s . loop
        chmod 604 empty; chmod 755 open; chmod 451 sealed/file; chmod 555 sealed
        for name in )" + names +
                              R"(; do
            second=$((second + 1)) # times that no clock would give
            touch -h -a -d @100000000$second.123456789 $name; touch -h -m -d @100000001$second.987654321 $name
        done
    )");
    const std::string before = shell(folder_ / "from", listing + "; chmod 6777 open");
    ASSERT_TRUE(files_.copy(folder_ / "from", user_ + "/to"));
    EXPECT_EQ(shell(user_ + "/to", listing), before);
    EXPECT_EQ(shell(user_ + "/to", "readlink absolute dangling loop; cat sealed/file"),
              "/etc/passwd\n../../nowhere\n.\ncontent\n");
    ASSERT_TRUE(files_.copy(folder_ / "from/absolute", user_ + "/link"));
    EXPECT_EQ(fs::read_symlink(user_ + "/link"), "/etc/passwd");
    ASSERT_TRUE(files_.copy("/proc/self/cmdline", user_ + "/size unknown"));
    EXPECT_EQ(contentsOf(user_ + "/size unknown"), contentsOf("/proc/self/cmdline"));
    EXPECT_TRUE(files_.remove(folder_ / "from") && files_.remove(user_ + "/to"));
}

TEST_F(FileManagerOfLinux, WhatIsInstalledFromAVolumeIsSharedWithItIfOnlyWeCanChangeIt) {
    shell(folder_.path(), R"(mkdir -p outside root/Volumes/V/A.app
                             printf x | tee outside/own root/Volumes/V/A.app/own > root/Volumes/V/A.app/open
                             chmod 666 root/Volumes/V/A.app/open; ln -s ../../outside root/Volumes/link)");
    EXPECT_TRUE(files_.install("/Volumes/V/A.app", user_ + "/installed"));
    EXPECT_TRUE(files_.installFromVolume("/Volumes/V/A.app", user_ + "/shared"));
    EXPECT_TRUE(files_.installFromVolume("/Volumes/V/A.app", user_ + "/second")); // never with two
    EXPECT_TRUE(files_.installFromVolume("/Volumes/link/own", user_ + "/linked"));
    EXPECT_EQ(
        shell(folder_.path(), "stat -c %h root/Volumes/V/A.app/own root/Volumes/V/A.app/open outside/own"),
        "2\n1\n1\n");
    EXPECT_TRUE(fs::equivalent(folder_ / "root/Volumes/V/A.app/own", user_ + "/shared/own"));
    EXPECT_TRUE(files_.remove("/Volumes/V"));
    for (const char* file : {"/installed/own", "/shared/own", "/shared/open", "/second/own", "/linked"})
        EXPECT_EQ(contentsOf(user_ + file), "x") << file;
}

TEST_F(FileManagerOfLinux, AReplacementTakesThePlaceOfAnything) {
    const std::string outside = writeFile(folder_ / "outside/file", "x");
    const std::string source = fs::path(writeFile(folder_ / "new/file", "new")).parent_path();
    constexpr unsigned none = ~0U;
    for (const unsigned refused : {none, unsigned{SYS_renameat2}}) // as some file systems do
        withoutSystemCall(refused, EINVAL, [&, this] {
            shell(user_,
                  "mkdir -p folder/inner; printf old | tee file > folder/inner/file; ln -s ../outside link");
            for (const char* target : {"/file", "/folder", "/link", "/none"}) {
                EXPECT_TRUE(files_.replace(source, user_ + target)) << target;
                EXPECT_TRUE(fs::is_directory(fs::symlink_status(user_ + target))) << target;
                EXPECT_EQ(contentsOf(user_ + target + "/file"), "new") << target;
            }
            EXPECT_TRUE(files_.replace(user_ + "/folder", user_ + "/folder")); // by itself
            EXPECT_EQ(contentsOf(user_ + "/folder/file"), "new");
            EXPECT_FALSE(files_.replace(folder_ / "missing", user_ + "/folder"));
            EXPECT_EQ(countIn(user_), 4);
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
        EXPECT_EQ(countIn(user_), isReplaced ? 1 : 2); // hidden
    }
    writeFile(bundle + "/Contents/file", "old");
    withoutSystemCall(SYS_renameat2, EIO, [&, this] {
        refuseSystemCall(SYS_renameat, EIO);
#ifdef SYS_rename // not on every processor
        refuseSystemCall(SYS_rename, EIO);
#endif
        EXPECT_FALSE(files_.remove(bundle));
    });
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
        EXPECT_EQ(countIn(user_), 0) << mode;
    }
    fs::create_directory_symlink(folder_ / "outside", tree);
    EXPECT_TRUE(files_.remove(tree));
    EXPECT_FALSE(files_.remove(tree));
    EXPECT_EQ(contentsOf(folder_ / "outside/file"), "x");
}

TEST(StagedPath, LeftoversOfDeadProcessesAndOfEarlierOnesOfItsNumberGoAndAllElseStays) {
    const TemporaryFolder folder;
    const std::string dead = shell("/", "printf $$");
    const std::string staged = ".A.app.";
    for (const std::string& mark : {dead + ".7", std::to_string(::getpid()) + ".4000000000"})
        writeFile(folder / staged + mark + ".partial/Contents/file", "x");
    const StagedPath other(folder / "A.app"); // is at work all the time
    // The first process of the system is always alive.
    std::vector<std::string> kept = {fs::path(other.path()).filename(), ".A.app.partial",
                                     staged + dead + ".7", ".B.app." + dead + ".7.partial"};
    for (const std::string& mark :
         {"1.7"s, dead, dead + ".", dead + ".7.7", dead + "x7", "-" + dead + ".7", "99999999999999.7"s})
        kept.push_back(staged + mark + ".partial");
    for (const std::string& name : kept)
        writeFile(folder / name, "x");
    EXPECT_NE(StagedPath(folder / "A.app").path(), other.path());
    for (const std::string& name : kept)
        EXPECT_TRUE(fs::exists(folder / name)) << name;
    EXPECT_EQ(countIn(folder.path()), std::ssize(kept));
}

TEST(StagedPath, ACommitToANewNameReplacesNothingOnAnyFileSystem) {
    const TemporaryFolder folder;
    shell(folder.path(), "printf old > file; mkdir empty; ln -s nowhere link");
    const auto commits = [&](const std::string& name, const std::string& made) {
        StagedPath staged(folder / name);
        writeFile(staged.path() + made, "new");
        return staged.commitNew();
    };
    constexpr unsigned none = ~0U;
    for (const unsigned refused : {none, unsigned{SYS_renameat2}}) // some cannot rename without replacing
        withoutSystemCall(refused, EINVAL, [&] {
            for (const char* made : {"", "/file"}) { // a file, and a folder
                for (const char* name : {"file", "empty", "link"})
                    EXPECT_FALSE(commits(name, made)) << name << made;
                EXPECT_TRUE(commits("new", made)) << made;
                EXPECT_EQ(contentsOf((folder / "new") + made), "new");
                fs::remove_all(folder / "new");
            }
        });
    EXPECT_EQ(shell(folder.path(), "ls -A . empty; cat file; readlink link"),
              ".:\nempty\nfile\nlink\n\nempty:\noldnowhere\n");
}
