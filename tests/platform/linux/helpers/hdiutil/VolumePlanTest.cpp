#include "platform/linux/helpers/hdiutil/VolumePlan.h"

#include "platform/Exception.h"

#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace join::platform::hdiutil {

namespace {

ListedEntry folder(std::string path) {
    return {.path = std::move(path),
            .isFolder = true,
            .mode = S_IFDIR | 0755,
            .modified = {},
            .linkText = {},
            .comment = {}};
}

ListedEntry file(std::string path, std::uint64_t size = 1, mode_t mode = S_IFREG | 0644) {
    return {
        .path = std::move(path), .size = size, .mode = mode, .modified = {}, .linkText = {}, .comment = {}};
}

ListedEntry link(std::string path, std::uint64_t size) { return file(std::move(path), size, S_IFLNK | 0777); }

Listing hfsPlus(const std::vector<ListedEntry>& entries) {
    Listing listing{.types = {"HFS"}, .volumeNames = {}, .entries = {folder("V")}};
    listing.entries.insert(listing.entries.end(), entries.begin(), entries.end());
    return listing;
}

Listing iso(const std::string& name, const std::vector<ListedEntry>& entries) {
    return {.types = {"Iso"}, .volumeNames = {name}, .entries = entries};
}

VolumePlan plan(const Listing& listing, ImageKind kind = ImageKind::hfsPlus) {
    return planVolume(listing, kind, {.entries = 5, .bytes = 10'000, .depth = 2});
}

bool isRefused(const Listing& listing, ImageKind kind = ImageKind::hfsPlus) {
    try {
        plan(listing, kind);
        return false;
    } catch (const Exception&) {
        return true;
    }
}

} // namespace

TEST(VolumePlan, NamesAreThoseBelowTheVolumesTopFolder) {
    const VolumePlan made =
        plan(hfsPlus({folder("V/a"), file("V/a/b", 7, S_IFREG | 06755), link("V/way", 3)}));

    EXPECT_EQ(made.name, "V");
    EXPECT_EQ(made.bytes, 10U);
    ASSERT_EQ(made.entries.size(), 4U);
    EXPECT_EQ(made.entries[0].path, "");
    EXPECT_EQ(made.entries[2].path, "a/b");
    EXPECT_EQ(made.entries[2].mode, mode_t{0755});
    EXPECT_EQ(made.entries[3].kind, EntryKind::link);
}

TEST(VolumePlan, WhatIsOfTheFileSystemIsHiddenAtTheTopAlone) {
    const VolumePlan made =
        plan(hfsPlus({file("V/____HFS+ Private Data/temp1", 2), folder("V/HFS+ Private Data"),
                      folder("V/.HFS+ Private Directory Data_"), file("V/.journal", 9)}));
    EXPECT_EQ(made.bytes, 11U);
    for (std::size_t n = 1; n < made.entries.size(); ++n)
        EXPECT_EQ(made.entries[n].kind, EntryKind::hidden) << made.entries[n].path;
    const VolumePlan others = plan(hfsPlus({folder("V/a"), file("V/a/.journal"), file("V/private-dir")}));
    EXPECT_EQ(others.entries[2].kind, EntryKind::file);
    EXPECT_EQ(others.entries[3].kind, EntryKind::file);
    EXPECT_EQ(plan(iso("I", {folder("[BOOT]"), file("[BOOT]/x")}), ImageKind::iso).entries[1].kind,
              EntryKind::hidden);
    const Listing apfs{.types = {"APFS"}, .volumeNames = {"V"}, .entries = {file("private-dir/a\nb")}};
    EXPECT_EQ(plan(apfs, ImageKind::apfs).entries[0].kind, EntryKind::hidden);
}

TEST(VolumePlan, HostileVolumesAreRefused) {
    const ListedEntry device = file("V/d", 0, S_IFCHR | 0600);
    const ListedEntry pipe = file("V/p", 0, S_IFIFO | 0600);
    const ListedEntry socket = file("V/s", 0, S_IFSOCK | 0600);
    ListedEntry folderThatIsALink = folder("V/f");
    folderThatIsALink.linkText = "/tmp";
    const std::vector<std::vector<ListedEntry>> cases{
        {file("V/..")},
        {file("V/.")},
        {file("V/")},
        {file("V//a")},
        {folder("V/a"), file("V/a/../../b")},
        {file("/etc/passwd")},
        {file("../V/a")},
        {file("V")},
        {file(std::string("V/a\0b", 5))},
        {file("V/a\nb")},
        {file("V/\xFF")},
        {file("V/" + std::string(256, 'a'))},
        {file("V/a"), file("V/a")},
        {link("V/a", 4), folder("V/a")},
        {link("V/a", 4), file("V/a/b")},
        {file("V/a"), file("V/a/b")},
        {file("V/missing/b")},
        {file("W/a")},
        {folder("V")},
        {link("V/a", 0)},
        {link("V/a", 4096)},
        {folderThatIsALink},
        {device},
        {pipe},
        {socket},
        {file("V/____HFS+ Private Data/iNode12")},
        {folder("V/.HFS+ Private Directory Data_/dir_12")},
        {file("V/a", 10'001)},
        {file("V/a", 6000), file("V/b", 6000)},
        {file("V/a", 6000), file("V/b", UINT64_MAX - 3000)},
        {file("V/a"), file("V/b"), file("V/c"), file("V/d"), file("V/e")},
        {folder("V/a"), folder("V/a/b"), folder("V/a/b/c"), file("V/a/b/c/d")}};
    for (std::size_t n = 0; n < cases.size(); ++n)
        EXPECT_TRUE(isRefused(hfsPlus(cases[n]))) << "case " << n << ", " << cases[n].back().path;
}

TEST(VolumePlan, OtherThanTheOneVolumeThatTheImageWasTakenForIsRefused) {
    for (const char* name : {"", ".", "..", "a/b", "/", "../../a", "a\nb", ".hidden", "\xC3"})
        EXPECT_TRUE(isRefused(iso(name, {file("a")}), ImageKind::iso)) << name;
    EXPECT_FALSE(isRefused(iso("Ä b", {file("a")}), ImageKind::iso));
    EXPECT_TRUE(isRefused(iso("V", {}), ImageKind::apfs));
    EXPECT_FALSE(isRefused({{"APFS"}, {"V"}, {}}, ImageKind::apfs));
    EXPECT_TRUE(isRefused({{"APFS"}, {"V", "V"}, {}}, ImageKind::apfs));
    EXPECT_TRUE(isRefused({{"Dmg"}, {"V"}, {}}, ImageKind::udif));
    EXPECT_TRUE(isRefused({{"Dmg", "HFS"}, {}, {folder("V")}}, ImageKind::hfsPlus));
}

} // namespace join::platform::hdiutil
