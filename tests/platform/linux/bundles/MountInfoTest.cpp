#include "platform/linux/bundles/MountInfo.h"

#include <gtest/gtest.h>

namespace {

using namespace join::platform;

TEST(MountInfo, TellsLocalVolumesFromOthers) {
    for (const auto& [source, type, local] : {std::tuple{"/dev/sda1", "ext4", true},
                                              {"pool/home", "zfs", true},
                                              {"proc", "proc", false},
                                              {"tmpfs", "tmpfs", false},
                                              {"server:/home", "nfs4", false},
                                              {"/dev/fuse", "fuse.sshfs", false},
                                              {"gvfsd-fuse", "fuse.gvfsd-fuse", false},
                                              {"disk.iso", "fuse.fuseiso", true},
                                              {"fusectl", "fusectl", false},
                                              {"/dev/sdb1", "fuseblk", true}})
        EXPECT_EQ(isLocalVolume({"/x", type, source, true}), local) << type;
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
