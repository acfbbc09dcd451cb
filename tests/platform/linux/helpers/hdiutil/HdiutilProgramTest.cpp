#include "support/Child.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace join::test {

TEST(HdiutilProgram, SaysInOneLineWhyItFailedAndEndsWithStatusTwoWhenCalledInAnotherWay) {
    const TemporaryFolder folder;
    const std::string usage = "usage: ";
    const struct {
        std::vector<std::string> arguments;
        int status;
        std::string says;
    } cases[] = {{{"mount", "missing"}, 1, "hdiutil: the image cannot be read: No such file or directory\n"},
                 {{"detach", "/Volumes/missing"}, 1, "hdiutil: no volume is mounted there\n"},
                 {{}, 2, usage},
                 {{"mount"}, 2, usage},
                 {{"mount", "a", "b"}, 2, usage},
                 {{"eject", "a"}, 2, usage},
                 {{"-h"}, 2, usage}};
    for (const auto& [arguments, status, says] : cases) {
        std::vector<std::string> command = {HDIUTIL_PROGRAM};
        command.insert(command.end(), arguments.begin(), arguments.end());
        Child child({.command = command,
                     .environment = {{"HOME", folder.path()}, {"XDG_DATA_HOME", folder / "data"}},
                     .directory = folder.path(),
                     .output = folder / "output"});
        EXPECT_EQ(child.wait(), status) << says;
        EXPECT_TRUE(contentsOf(folder / "output").starts_with(says)) << contentsOf(folder / "output");
    }
}

} // namespace join::test
