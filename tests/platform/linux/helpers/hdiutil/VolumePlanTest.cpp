#include "platform/linux/helpers/hdiutil/VolumePlan.h"

#include "platform/Exception.h"

#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace join::platform::hdiutil {

namespace {

using namespace std::string_literals;

ListedEntry file(std::string path, std::uint64_t size = 1, mode_t mode = S_IFREG | 0644) {
    return {
        .path = std::move(path), .size = size, .mode = mode, .modified = {}, .linkText = {}, .comment = {}};
}

ListedEntry folder(std::string path) {
    ListedEntry made = file(std::move(path), 0, S_IFDIR | 0755);
    made.isFolder = true;
    return made;
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

} // namespace

TEST(VolumePlan, NamesAreThoseBelowTheVolumesTopFolder) {
    const VolumePlan made =
        plan(hfsPlus({folder("V/a"), file("V/a/b", 7, S_IFREG | 06777), link("V/way", 3)}));

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
    for (const std::string& path :
         {"V/.."s, "V/."s, "V/"s, "V//a"s, "/etc/passwd"s, "../V/a"s, "V"s, "V/a\0b"s, "V/a\nb"s, "V/\xFF"s,
          "V/" + std::string(256, 'a'), "V/missing/b"s, "W/a"s, "V/____HFS+ Private Data/iNode12"s})
        EXPECT_THROW(plan(hfsPlus({file(path)})), Exception) << path;
    for (const mode_t type : {S_IFCHR, S_IFIFO, S_IFSOCK})
        EXPECT_THROW(plan(hfsPlus({file("V/a", 0, type | 0600)})), Exception) << type;
    ListedEntry folderThatIsALink = folder("V/f");
    folderThatIsALink.linkText = "/tmp";
    using Entries = std::vector<ListedEntry>;
    for (const Entries& entries :
         {Entries{folder("V/a"), file("V/a/../../b")}, Entries{file("V/a"), file("V/a")},
          Entries{link("V/a", 4), folder("V/a")}, Entries{link("V/a", 4), file("V/a/b")},
          Entries{file("V/a"), file("V/a/b")}, Entries{folder("V")}, Entries{link("V/a", 0)},
          Entries{link("V/a", 4096)}, Entries{folderThatIsALink},
          Entries{folder("V/.HFS+ Private Directory Data_/dir_12")}, Entries{file("V/a", 10'001)},
          Entries{file("V/a", 6000), file("V/b", 6000)},
          Entries{file("V/a", 6000), file("V/b", UINT64_MAX - 3000)},
          Entries{file("V/a"), file("V/b"), file("V/c"), file("V/d"), file("V/e")},
          Entries{folder("V/a"), folder("V/a/b"), folder("V/a/b/c"), file("V/a/b/c/d")}})
        EXPECT_THROW(plan(hfsPlus(entries)), Exception) << entries.back().path;
}

TEST(VolumePlan, OtherThanTheOneVolumeThatTheImageWasTakenForIsRefused) {
    for (const char* name : {"", ".", "..", "a/b", "/", "../../a", "a\nb", ".hidden", "\xC3"})
        EXPECT_THROW(plan(iso(name, {file("a")}), ImageKind::iso), Exception) << name;
    EXPECT_NO_THROW(plan(iso("Ä b", {file("a")}), ImageKind::iso));
    EXPECT_THROW(plan(iso("V", {}), ImageKind::apfs), Exception);
    EXPECT_NO_THROW(plan({{"APFS"}, {"V"}, {}}, ImageKind::apfs));
    EXPECT_THROW(plan({{"APFS"}, {"V", "V"}, {}}, ImageKind::apfs), Exception);
    EXPECT_THROW(plan({{"Dmg"}, {"V"}, {}}, ImageKind::udif), Exception);
    EXPECT_THROW(plan({{"Dmg", "HFS"}, {}, {folder("V")}}, ImageKind::hfsPlus), Exception);
}

} // namespace join::platform::hdiutil
