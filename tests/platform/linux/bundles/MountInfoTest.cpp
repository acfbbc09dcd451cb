#include "platform/linux/bundles/MountInfo.h"

#include <gtest/gtest.h>

namespace {

using namespace join::platform;

TEST(MountInfo, ReadsEveryLineThatIsOne) {
    const auto mounts =
        parseMountInfo("27 1 254:0 / / rw,relatime shared:1 master:2 - ext4 /dev/vda rw,discard\n"
                       "40 27 8:17 / /media/ann/My\\040Stick\\134 ro,nosuid - vfat /dev/sdb1 rw\n"
                       "\n1 2 3\n1 2 3:4 / relative rw - ext4 a rw\n1 2 x:4 / /x rw - ext4 a rw\n"
                       "1 2 3:4 / /x rw\n1 2 3:4 / /x rw - ext4\n"
                       "41 27 0:50 / /mnt/odd\\9\\04 rw - nfs4 host:/a ro");
    ASSERT_EQ(mounts.size(), 3U);
    EXPECT_EQ(mounts[0].path, "/");
    EXPECT_EQ(mounts[0].type, "ext4");
    EXPECT_EQ(mounts[0].source, "/dev/vda");
    EXPECT_TRUE(mounts[0].writable);
    EXPECT_EQ(mounts[1].path, "/media/ann/My Stick\\");
    EXPECT_EQ(mounts[1].major, 8);
    EXPECT_EQ(mounts[1].minor, 17);
    EXPECT_FALSE(mounts[1].writable);
    EXPECT_EQ(mounts[2].path, "/mnt/odd\\9\\04");
    EXPECT_FALSE(mounts[2].writable);
}

TEST(MountInfo, TellsLocalVolumesFromOthers) {
    for (const auto& [major, type, local] : {std::tuple{8, "ext4", true},
                                             {0, "btrfs", true},
                                             {0, "proc", false},
                                             {0, "tmpfs", false},
                                             {0, "nfs4", false},
                                             {0, "fuse.sshfs", false},
                                             {0, "fuse.gvfsd-fuse", false},
                                             {0, "fuse.fuseiso", true},
                                             {0, "fusectl", false},
                                             {8, "fuseblk", true}})
        EXPECT_EQ(isLocalVolume({major, 0, "/x", type, "source", true}), local) << type;
}

TEST(MountInfo, OnlyWhatLiesInFoldersForVolumesIsUnmountable) {
    for (const char* path :
         {"/media/stick", "/mnt/x", "/run/media/ann/stick", "/Volumes/X", "/home/ann/stick"})
        EXPECT_TRUE(isUnmountable(path, "/home/ann")) << path;
    for (const char* path : {"/", "/home", "/home/ann", "/home/anna/x", "/boot", "/run/user/1000",
                             "/usr/local", "/media", "/mediation/x", "/mnt/"})
        EXPECT_FALSE(isUnmountable(path, "/home/ann")) << path;
    EXPECT_FALSE(isUnmountable("/srv/x", ""));
}

} // namespace
