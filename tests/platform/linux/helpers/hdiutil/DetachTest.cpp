#include "platform/Exception.h"
#include "platform/linux/helpers/hdiutil/Mount.h"
#include "support/RefusedSystemCall.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace join::platform::hdiutil {

namespace fs = std::filesystem;

class Detach : public testing::Test {
protected:
    test::TemporaryFolder folder_;
    std::string file_ = test::writeFile(folder_ / "root/Volumes/Tavo/a/file", "x");
    SystemRoot root_{folder_ / "root"};
};

TEST_F(Detach, TakesOneVolumeAway) {
    fs::create_directory(folder_ / "root/Volumes/Other");
    fs::create_symlink(folder_ / "root/Volumes/Other", folder_ / "root/Volumes/Tavo/way");

    detachVolume("/Volumes/Tavo", root_);

    EXPECT_FALSE(fs::exists(folder_ / "root/Volumes/Tavo"));
    EXPECT_TRUE(fs::exists(folder_ / "root/Volumes/Other"));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_ / "root"), {}), 1);
}

TEST_F(Detach, NeedsNoRoom) {
    test::withoutSystemCall(SYS_mkdir, ENOSPC,
                            [this] { EXPECT_NO_THROW(detachVolume("/Volumes/Tavo", root_)); });
    EXPECT_TRUE(fs::is_empty(folder_ / "root/Volumes"));
}

TEST_F(Detach, RefusesEverythingElse) {
    fs::create_directory_symlink(folder_ / "root/Volumes/Tavo", folder_ / "root/Volumes/way");
    test::writeFile(folder_ / "root/Volumes/plain", "x");
    for (const char* place :
         {"", "/", "/Volumes", "/Volumes/", "/Volumes/.", "/Volumes/..", "/Volumes/Tavo/a", "/Volumes/Tavo/",
          "/Volumes//Tavo", "/Volumes/../Volumes/Tavo", "Tavo", "/Volumes/way", "/Volumes/plain",
          "/Volumes/missing", "/Applications/Tavo"})
        EXPECT_THROW(detachVolume(place, root_), Exception) << place;
    EXPECT_THROW(detachVolume(folder_ / "root/Volumes/Tavo", root_), Exception);
    EXPECT_TRUE(fs::exists(file_));
}

} // namespace join::platform::hdiutil
