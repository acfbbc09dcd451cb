#include "platform/linux/hdiutil/Listing.h"

#include "platform/Exception.h"

#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace join::platform::hdiutil {

namespace {

using namespace std::string_literals;

constexpr const char* listed =
    "\n7-Zip\n\nListing archive: x.dmg\n\n--\nPath = x.dmg\nType = Dmg\nOffset = 7\n"
    "Comment = \n{\nVolume: Named Apart\n}\n----\nPath = 0.hfs\nSize = 9\n--\n"
    "Path = 0.hfs\nType = HFS\n\n----------\n"
    "Path = Tavo\nFolder = +\nSize = \nModified = 2024-02-29 12:30:01.5\n"
    "Mode = drwxr-sr-t\nAlternate Stream = -\n\n"
    "Path = Tavo/ a = b\nFolder = -\nSize = 12\nModified = \nMode = -rwsr-x---\n\n"
    "Path = Tavo/a:rsrc\nFolder = -\nSize = 5\nAlternate Stream = +\n\n"
    "Path = Tavo/way\nFolder = -\nSize = 0\nMode = lrwxr-xr-x\n"
    "Symbolic Link = ../x\n\n";

} // namespace

TEST(Listing, TellsTypesNamesSizesModesTimesAndLinks) {
    const Listing listing = parseListing(listed, 10);

    EXPECT_EQ(listing.types, (std::vector<std::string>{"Dmg", "HFS"}));
    EXPECT_EQ(listing.offset, 0U);
    EXPECT_EQ(listing.volumeName, "Named Apart");
    ASSERT_EQ(listing.entries.size(), 3U);
    const ListedEntry& top = listing.entries[0];
    EXPECT_TRUE(top.isFolder);
    EXPECT_EQ(top.mode, mode_t{S_IFDIR | 0755});
    EXPECT_EQ(top.modified, 1709209801);
    const ListedEntry& file = listing.entries[1];
    EXPECT_EQ(file.path, "Tavo/ a = b");
    EXPECT_EQ(file.size, 12U);
    EXPECT_EQ(file.mode, mode_t{S_IFREG | 0750});
    EXPECT_FALSE(file.modified);
    EXPECT_EQ(listing.entries[2].linkText, "../x");
}

TEST(Listing, TellsWhatIsNeitherFileNorFolderNorLink) {
    const std::pair<char, mode_t> cases[] = {{'c', S_IFCHR}, {'b', S_IFBLK}, {'p', S_IFIFO}, {'s', S_IFSOCK}};
    for (const auto& [letter, type] : cases) {
        const std::string entry = "Path = a\nFolder = -\nSize = 0\nMode = " + (letter + "rw-------\n"s);
        EXPECT_EQ(parseListing("Type = HFS\n----------\n" + entry, 1).entries[0].mode, type | 0600) << letter;
    }
}

TEST(Listing, IsRefusedWhenItCannotBeUnderstood) {
    const std::string head = "Type = HFS\n----------\n";
    const std::vector<std::string> texts{"",
                                         "Type = HFS\n",
                                         head + "Size = 1\nPath = a\n",
                                         head + "Path = a\nFolder = -\nSize = many\n",
                                         head + "Path = a\nFolder = -\nSize = 99999999999999999999\n",
                                         head + "Path = a\nFolder = -\nSize = -1\n",
                                         head + "Path = a\nPath = b\nFolder = -\nSize = 1\n",
                                         head + "Path = a\nFolder = -\n"};
    for (const std::string& text : texts)
        EXPECT_THROW(parseListing(text, 10), Exception) << text;
}

TEST(Listing, IsRefusedBeyondItsMaximum) {
    EXPECT_NO_THROW(parseListing(listed, 3));
    EXPECT_THROW(parseListing(listed, 2), Exception);
}

} // namespace join::platform::hdiutil
