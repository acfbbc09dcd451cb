#include "images/DiskImage.h"
#include "support/Child.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace join::test {

namespace fs = std::filesystem;

class HdiutilProgram : public testing::Test {
protected:
    int run(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), HDIUTIL_PROGRAM);
        Child child({.command = arguments,
                     .environment = {{"HOME", folder_.path()}, {"XDG_DATA_HOME", folder_ / "data"}},
                     .directory = folder_.path(),
                     .output = folder_ / "output"});
        return child.wait();
    }

    std::string output() const { return contentsOf(folder_ / "output"); }

    TemporaryFolder folder_;
};

TEST_F(HdiutilProgram, MountsAndDetaches) {
    writeFile(folder_ / "in/file", "x");
    tools::makeDiskImage(folder_ / "in", "Tavo One", tools::ImageKind::udifZlib, folder_ / "image");

    EXPECT_EQ(run({"mount", "image"}), 0);
    EXPECT_EQ(output(), "/Volumes/Tavo One\n");
    const std::string volume = folder_ / "data/tavojoin/root/Volumes/Tavo One";
    EXPECT_EQ(contentsOf(volume + "/file"), "x");

    EXPECT_EQ(run({"detach", "/Volumes/Tavo One"}), 0);
    EXPECT_FALSE(fs::exists(volume));
}

TEST_F(HdiutilProgram, SaysInOneLineWhyItFailed) {
    EXPECT_EQ(run({"mount", "missing"}), 1);
    EXPECT_EQ(output(), "hdiutil: the image cannot be read: No such file or directory\n");
    EXPECT_EQ(run({"detach", "/Volumes/missing"}), 1);
    EXPECT_EQ(output(), "hdiutil: no volume is mounted there\n");
}

TEST_F(HdiutilProgram, EndsWithStatusTwoWhenCalledInAnotherWay) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{}, {"mount"}, {"mount", "a", "b"}, {"eject", "a"}, {"-h"}})
        EXPECT_EQ(run(arguments), 2);
}

} // namespace join::test
