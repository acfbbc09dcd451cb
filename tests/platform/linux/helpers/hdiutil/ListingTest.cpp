#include "platform/linux/helpers/hdiutil/Listing.h"

#include "platform/Exception.h"

#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace join::platform::hdiutil {

namespace {

using namespace std::string_literals;

std::string entry(const std::string& path, const std::string& size, const std::string& mode,
                  const std::string& more) {
    return "Path = " + path + "\nSize = " + size + "\nPacked Size = " + size + "\nMode = " + mode +
           "\nModified = 2024-02-29 12:30:01.548000000\nAccessed = 2021-11-25 20:20:25.684144769\n"
           "Method = \niNode = 246\n" +
           more + "Primary Name = " + path + "\nBSD Flags = \n\n";
}

/// As 7zz lists an APFS volume.
const std::string listed =
    "\n7-Zip (z) 26.02 (x64)\n\nListing archive: x.dmg\n\n--\nPath = x.dmg\nType = APFS\n"
    "Physical Size = 14639104\nName = Tavo.apfs\nComment = \n{\nblock_size: 4096\nfs_index: 0\n"
    "volume_name: Tavo\nincompatible_features: CASE_INSENSITIVE\nnum_snapshots: 0\n"
    "formatted_by: newfs_apfs (1933.41.2)\n  timestamp: 2021-11-25 20:20:21.547919838\n  last_xid: 2\n}\n\n"
    "----------\n" +
    entry("a/ b = c", "12", "-rwsr-x---", "Symbolic Link = \n") +
    entry("a/way", "8", "lrwxr-xr-x", "Symbolic Link = ../x y/z\n") +
    entry("a", "", "drwxr-sr-t", "Links = \nSymbolic Link = \n") +
    entry("a/ b = c:com.apple.quarantine", "5", "", "Alternate Stream = +\n");

} // namespace

TEST(Listing, TellsTypesNamesSizesModesTimesAndLinks) {
    const Listing listing = parseListing(listed, 10);

    EXPECT_EQ(listing.types, std::vector<std::string>{"APFS"});
    EXPECT_EQ(listing.volumeNames, std::vector<std::string>{"Tavo"});
    ASSERT_EQ(listing.entries.size(), 3U);
    const ListedEntry& file = listing.entries[0];
    EXPECT_EQ(file.path, "a/ b = c");
    EXPECT_EQ(file.size, 12U);
    EXPECT_EQ(file.mode, mode_t{S_IFREG | 0750});
    EXPECT_EQ(file.modified, 1709209801);
    EXPECT_FALSE(file.isFolder);
    EXPECT_EQ(listing.entries[1].linkText, "../x y/z");
    const ListedEntry& folder = listing.entries[2];
    EXPECT_TRUE(folder.isFolder);
    EXPECT_EQ(folder.size, 0U);
    EXPECT_EQ(folder.mode, mode_t{S_IFDIR | 0755});
}

TEST(Listing, TellsWhatIsNeitherFileNorFolderNorLink) {
    const std::pair<char, mode_t> cases[] = {{'c', S_IFCHR}, {'b', S_IFBLK}, {'p', S_IFIFO}, {'s', S_IFSOCK}};
    for (const auto& [letter, type] : cases) {
        const std::string text = "Type = APFS\n----------\n" + entry("a", "0", letter + "rw-------"s, "");
        EXPECT_EQ(parseListing(text, 1).entries[0].mode, type | 0600) << letter;
    }
}

TEST(Listing, IsRefusedWhenItCannotBeUnderstoodOrIsTooLong) {
    const std::string head = "Type = HFS\n----------\n";
    for (const char* size : {"many", "99999999999999999999", "-1", ""})
        EXPECT_THROW(parseListing(head + entry("a", size, "-rw-r--r--", ""), 10), Exception) << size;
    for (const std::string& text :
         {""s, "Type = HFS\n"s, listed + "----------\n", listed + listed, head + "Size = 1\nPath = a\n",
          head + entry("a", "1", "-rw-r--r--", "Path = b\n")})
        EXPECT_THROW(parseListing(text, 10), Exception) << text;
    EXPECT_NO_THROW(parseListing(listed, 3));
    EXPECT_THROW(parseListing(listed, 2), Exception) << "more entries than the maximum";
}

} // namespace join::platform::hdiutil
