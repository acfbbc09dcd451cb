#include "platform/linux/process/LinuxTasks.h"
#include "platform/Exception.h"
#include "platform/linux/files/Descriptor.h"
#include "support/Child.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace join::test {

using namespace platform;

class LinuxTasksTest : public testing::Test {
protected:
    /// An executable script in the test's folder.
    std::string script(const std::string& name, const std::string& lines) {
        return writeProgram(folder / name, "#!/bin/sh\n" + lines);
    }

    /// The starter of a program may make it ignore how its children end.
    void (*const before)(int) = std::signal(SIGCHLD, SIG_IGN);
    TemporaryFolder folder;
    LinuxTasks tasks{SystemRoot(folder / "root"), folder / "Helpers"};
};

TEST_F(LinuxTasksTest, AProgramIsTakenByItsBytesAndTellsItsStatusAndWhatItWroteWithoutHarm) {
    const std::string odd = folder / "d\xF6";
    fs::create_directory(odd);
    const std::string program =
        script("caf\xE9 \xFF", "pwd; for a; do echo \"<$a>\"; done\n"
                               "printf '\\033[2J\\302' >&2; printf '\\233' >&2; exit 7\n");
    testing::internal::CaptureStderr();
    const TaskResult result = tasks.run({program, {"-i", "*", "two words", "$(id)", "", "\xE9"}, odd});
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "\\x1B[2J\\xC2\\x9B");
    EXPECT_TRUE(result.exited);
    EXPECT_EQ(result.status, 7);
    EXPECT_EQ(result.output, odd + "\n<-i>\n<*>\n<two words>\n<$(id)>\n<>\n<\xE9>\n");
}

TEST_F(LinuxTasksTest, AProgramEndedByASignalOrAtItsTimeHasNotExitedAndWhatItLeavesIsNotWaitedFor) {
    using namespace std::chrono_literals;
    EXPECT_FALSE(tasks.run({script("tool", "kill -9 $$\n"), {}, "/"}).exited);
    for (const char* lines : {"exec sleep 1000\n", "trap '' TERM\nexec sleep 1000\n"})
        EXPECT_FALSE(tasks.run({script("tool", lines), {}, "/", 100ms}).exited);
    const std::string lines = "head -c 3000000 /dev/zero\n(exec sleep 1000) & echo $! > \"$1\"; echo end\n";
    const TaskResult result = tasks.run({script("tool", lines), {folder / "left"}, "/"});
    ::kill(std::stoi(contentsOf(folder / "left")), SIGKILL);
    EXPECT_EQ(result.output.size(), 3000004U);
}

TEST_F(LinuxTasksTest, AProgramThatCannotBeStartedThrows) {
    const Program missing{folder / "missing", {}, "/"};
    const Program noFolder{script("tool", ""), {}, folder / "no-folder"};
    for (const Program& program : {missing, noFolder}) {
        EXPECT_THROW(tasks.run(program), Exception);
        EXPECT_FALSE(tasks.startDetached(program));
        EXPECT_EQ(refusalOf([&] { tasks.start(program); }),
                  "Cannot start " + program.path + ": No such file or directory");
    }
}

TEST_F(LinuxTasksTest, AProgramIsFoundBelowTheSystemRootAndAmongTheHelpersEvenWhenTheBundleIsGone) {
    script("root/Applications/X.app/Contents/MacOS/X", "echo found\n");
    EXPECT_EQ(tasks.run({"/Applications/X.app/Contents/MacOS/X", {}, "/"}).output, "found\n");
    fs::create_directory(folder / "Helpers");
    fs::copy("/bin/echo", folder / "Helpers/scselect");
    LinuxTasks withHelpers(SystemRoot(folder / "root"), folder / "Helpers");
    for (int time = 0; time < 2; ++time) {
        EXPECT_EQ(withHelpers.run({"/usr/sbin/no/scselect", {"helper"}, "/"}).output, "helper\n");
        fs::remove_all(folder / "Helpers");
    }
}

TEST_F(LinuxTasksTest, ChildrenGetTheStandardStreamsOnlyAndASessionOfTheirOwnWhenTheyAreLeft) {
    const Descriptor leak(::open("/dev/zero", O_RDONLY)); // as a library may open it, without a mark
    const std::string program =
        script("tool", "{ readlink /proc/$$/fd/*; cut -d' ' -f6 /proc/$$/stat; } > \"$1.part\"\n"
                       "mv \"$1.part\" \"$1\"\n");
    tasks.run({program, {folder / "waited"}, "/"});
    tasks.start({program, {folder / "left"}, "/"});
    ASSERT_TRUE(tasks.startDetached({program, {folder / "detached"}, "/"}));
    for (const std::string name : {"waited", "left", "detached"}) {
        ASSERT_TRUE(eventually([&] { return !contentsOf(folder / name).empty(); }));
        const std::string text = contentsOf(folder / name);
        EXPECT_EQ(text.find("/dev/zero"), std::string::npos) << name;
        const bool isOfOurs = text.ends_with("\n" + std::to_string(::getsid(0)) + "\n");
        EXPECT_EQ(isOfOurs, name == "waited") << text;
        EXPECT_TRUE(name != "detached" || text.starts_with("/dev/null\n")) << text;
    }
}

} // namespace join::test
