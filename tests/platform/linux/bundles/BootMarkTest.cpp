#include "platform/linux/bundles/BootMark.h"

#include "platform/linux/files/Descriptor.h"
#include "support/Child.h"
#include "support/OrdinaryUser.h"
#include "support/TemporaryFolder.h"

#include <fcntl.h>
#include <filesystem>
#include <future>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>

using namespace join::platform;
using namespace join::test;
namespace fs = std::filesystem;

namespace {

class BootMark : public testing::Test {
protected:
    bool endVolumesIn(const std::string& boot) const {
        return endVolumesOfEarlierBoots(root_, writeFile(folder_ / "boot_id", boot));
    }
    void mount(const std::string& name = "Tavo") const { writeFile(volumes_ + "/" + name + "/file", "x"); }
    auto volumes() const { return std::distance(fs::directory_iterator(volumes_), {}); }

    TemporaryFolder folder_;
    SystemRoot root_{folder_ / "root"};
    std::string volumes_ = folder_ / "root/Volumes";
};

} // namespace

TEST_F(BootMark, VolumesLiveTillTheNextBoot) {
    EXPECT_FALSE(endVolumesIn("first")); // there is no root
    mount(".unfinished");
    fs::create_directory_symlink(folder_.path(), volumes_ + "/link");
    // At first nobody knows when they were mounted.
    for (const auto& [boot, left] : {std::pair{"first", 0}, {"first", 1}, {"", 1}, {"second", 0}}) {
        mount();
        EXPECT_TRUE(endVolumesIn(boot));
        EXPECT_EQ(volumes(), left) << boot;
    }
}

TEST_F(BootMark, WhoWaitsForAnotherLeavesWhatThatOneHasMountedSince) {
    mount("old");
    const Descriptor other = openForReading(AT_FDCWD, (folder_ / "root").c_str(), O_DIRECTORY);
    ASSERT_EQ(::flock(other.get(), LOCK_EX), 0);
    auto waiting = std::async(std::launch::async, [this] { return endVolumesIn("boot"); });
    const std::string waits = "-> FLOCK  ADVISORY  WRITE " + std::to_string(::getpid()) + " ";
    ASSERT_TRUE(eventually([&] { return contentsOf("/proc/locks").find(waits) != std::string::npos; }));
    writeFile(folder_ / "root/Volumes.boot", "boot");
    mount("new");
    ASSERT_EQ(::flock(other.get(), LOCK_UN), 0);
    EXPECT_TRUE(waiting.get());
    EXPECT_EQ(volumes(), 2);
}

TEST_F(BootMark, IsNotSetWhileVolumesOfAnEarlierBootAreShown) {
    mount();
    for (const std::string& closed : {volumes_, folder_ / "root"}) {
        ASSERT_EQ(::chmod(closed.c_str(), 0555), 0);
        const OrdinaryUser user;
        EXPECT_FALSE(endVolumesIn("boot")) << closed;
        ASSERT_EQ(::chmod(closed.c_str(), 0755), 0);
    }
    EXPECT_TRUE(endVolumesIn("boot"));
    EXPECT_EQ(volumes(), 0);
}
