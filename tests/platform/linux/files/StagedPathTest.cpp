#include "platform/linux/files/StagedPath.h"

#include "support/Child.h"
#include "support/RefusedSystemCall.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace join::platform;
using namespace join::test;

TEST(StagedPath, LeftoversOfDeadProcessesAndOfEarlierOnesOfItsNumberGoAndAllElseStays) {
    const TemporaryFolder folder;
    Child child({.command = {"true"}});
    const std::string dead = std::to_string(child.process());
    child.wait();
    const std::string own = std::to_string(::getpid());
    const std::string staged = ".A.app.";
    for (const std::string& mark : {dead + ".7", own + ".4000000000"})
        writeFile(folder / staged + mark + ".partial/Contents/file", "x");
    const StagedPath other(folder / "A.app"); // is at work all the time
    writeFile(other.path(), "x");
    // The first process of the system is always alive.
    const std::string kept[] = {
        fs::path(other.path()).filename(), staged + dead + ".partial",  staged + "1.7.partial",
        staged + dead + ".7.7.partial",    staged + dead + "..partial", staged + "0.partial",
        staged + "-" + dead + ".partial",  staged + dead + "x.partial", staged + dead,
        ".B.app." + dead + ".partial",     staged + ".partial",         "A.app." + dead + ".partial",
        staged + "99999999999999.partial"};
    for (const std::string& name : kept)
        writeFile(folder / name, "x");
    EXPECT_NE(StagedPath(folder / "A.app").path(), other.path());
    for (const std::string& name : kept)
        EXPECT_TRUE(fs::exists(folder / name)) << name;
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), std::ssize(kept));
}

TEST(StagedPath, ACommitToANewNameReplacesNothingOnAnyFileSystem) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "old");
    fs::create_directory(folder / "empty");
    fs::create_symlink("nowhere", folder / "link");
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
    EXPECT_EQ(contentsOf(folder / "file"), "old");
    EXPECT_TRUE(fs::is_empty(folder / "empty"));
    EXPECT_EQ(fs::read_symlink(folder / "link"), "nowhere");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 3);
}
