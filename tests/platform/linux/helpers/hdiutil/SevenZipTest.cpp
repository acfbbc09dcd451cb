#include "platform/linux/helpers/hdiutil/SevenZip.h"

#include "platform/Exception.h"
#include "support/Child.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace join::platform::hdiutil {

using test::writeFile;

TEST(SevenZip, IsTheProgramRatherThanAScriptThatStartsOne) {
    const test::TemporaryFolder folder;
    const std::string wrapper = test::writeProgram(folder / "wrapper");
    const std::string program = test::writeProgram(folder / "program", "\x7F\x45LF");
    const std::string other = writeFile(folder / "cannot be started", "\x7F\x45LF");
    EXPECT_EQ(pathOf7zz({folder / "missing", wrapper, other, program}), program);
    EXPECT_THROW(pathOf7zz({folder / "missing", wrapper, other}), Exception);
}

TEST(SevenZip, ReachesNothingButItsImage) {
    const test::TemporaryFolder folder;
    const std::string program = folder / "tries";
    std::filesystem::create_symlink(SEVEN_ZIP_STAND_IN, program);

    test::Child free({.command = {program}, .output = folder / "output"});
    EXPECT_EQ(free.wait(), 0);
    const std::string output = test::contentsOf(folder / "output");
    EXPECT_TRUE(output.starts_with("read: done\nlist: done\nwrite: done\nconnect: done\nstart: done\n"
                                   "signal: done\nthread: done\n"));
    EXPECT_TRUE(output.ends_with("execute: done\n")) << output;

    const Descriptor image = openForReading(AT_FDCWD, writeFile(folder / "image", "x").c_str());
    const Interruption interruption(std::chrono::minutes(1));
    EXPECT_EQ(SevenZip(program, image.get(), ImageKind::iso, interruption).list(),
              "read: Permission denied\nlist: Permission denied\nwrite: Permission denied\n"
              "connect: Operation not permitted\nstart: Operation not permitted\n"
              "signal: Operation not permitted\nthread: done\nimage: done\n"
              "execute: Operation not permitted\n");
}

} // namespace join::platform::hdiutil
