#include "platform/linux/helpers/hdiutil/VolumePlan.h"

#include "platform/Exception.h"

#include <gtest/gtest.h>
#include <sstream>

namespace join::platform::hdiutil {

namespace {

using namespace std::string_literals;

/// What becomes of a volume that 7zz lists so: its name and bytes, and a line for each entry with the first
/// letter of its kind; or why it is refused. The name of a disc is not in its listing.
std::string planned(const std::string& text, ImageKind kind, const std::string& discName = "") {
    try {
        Listing listing = parseListing(text, 5);
        if (kind == ImageKind::iso)
            listing.volumeNames = {discName};
        const VolumePlan plan = planVolume(listing, kind, {.bytes = 10'000, .depth = 2});
        std::ostringstream out;
        out << plan.name << ' ' << plan.bytes << '\n';
        for (const PlannedEntry& entry : plan.entries)
            out << "dflh"[static_cast<int>(entry.kind)] << std::oct << entry.mode << std::dec << ' '
                << entry.size << ' ' << entry.modified.value_or(-1) << " '" << entry.path << "' "
                << entry.linkText << '\n';
        return out.str();
    } catch (const Exception& refusal) {
        return refusal.what();
    }
}

std::string file(const std::string& path, const std::string& size = "1",
                 const std::string& mode = "-rw-r--r--", const std::string& more = "") {
    return "Path = " + path + "\nSize = " + size + "\nPacked Size = 5\nMode = " + mode + "\n" + more + "\n";
}

std::string folder(const std::string& path) { return file(path, "", "drwxr-xr-x"); }

std::string link(const std::string& path, const std::string& size) { return file(path, size, "lrwxrwxrwx"); }

std::string hfsPlus(const std::string& entries) {
    return planned("Type = HFS\n----------\n" + folder("V") + entries, ImageKind::hfsPlus);
}

} // namespace

TEST(VolumePlan, IsMadeOfWhat7zzLists) {
    const std::string times = "Modified = 2024-02-29 12:30:01.548000000\nAccessed = 2021-11-25 20:20:25\n";
    const std::string apfs =
        "\n7-Zip (z) 26.02 (x64)\n\nListing archive: x.dmg\n\n--\nPath = x.dmg\nType = APFS\n"
        "volume_name: x\nName = Tavo.apfs\nComment = \n{\nblock_size: 4096\nType = HFS\n"
        "volume_name: Tavo\nnum_snapshots: 0\nformatted_by: newfs_apfs (1933.41.2)\n  last_xid: 2\n}\n\n"
        "----------\n" +
        file("a/ b = c", "12", "-rwsr-x---", times + "Symbolic Link = \n") +
        file("a/way", "8", "lrwxr-xr-x", "Symbolic Link = ../x y/z\n") +
        file("a/ b = c:com.apple.quarantine", "5", "", "Alternate Stream = +\n") +
        file("a", "", "drwx--sr-t", times + "Links = \nSymbolic Link = \n") + file("private-dir/b");
    EXPECT_EQ(planned(apfs, ImageKind::apfs), "Tavo 21\n"
                                              "f750 12 1709209801 'a/ b = c' \n"
                                              "l755 8 -1 'a/way' ../x y/z\n"
                                              "d715 0 1709209801 'a' \n"
                                              "h644 1 -1 'private-dir/b' \n");
    const std::string disc = "Type = Iso\n----------\n" + file("a", "0", "", "Symbolic Link = ../\n");
    EXPECT_EQ(planned(disc + folder("[BOOT]"), ImageKind::iso, "Ä b"),
              "Ä b 0\nl755 0 -1 'a' ..\nh755 0 -1 '[BOOT]' \n");
    EXPECT_EQ(hfsPlus(file("V/a", "9", "", "Folder = +\n") + file("V/a/b", "7") + link("V/way", "3")),
              "V 10\nd755 0 -1 '' \nd755 0 -1 'a' \nf644 7 -1 'a/b' \nl755 3 -1 'way' \n");
}

TEST(VolumePlan, HidesWhatIsOfTheFileSystemAtTheTopAlone) {
    for (const std::string& name :
         {"HFS+ Private Data"s, "[HFS+ Private Data]"s, "____HFS+ Private Data"s,
          "\0\0\0\0HFS+ Private Data"s, ".HFS+ Private Directory Data"s, ".HFS+ Private Directory Data\r"s,
          ".HFS+ Private Directory Data_"s, ".journal"s, ".journal_info_block"s}) {
        EXPECT_EQ(hfsPlus(file("V/" + name + "/temp1", "2") + folder("V/a") + file("V/a/.journal")),
                  "V 3\nd755 0 -1 '' \nh644 2 -1 '" + name +
                      "/temp1' \nd755 0 -1 'a' \nf644 1 -1 'a/.journal' \n");
        const std::string hardLink = name.starts_with(".HFS") ? "/dir_1" : "/iNode1";
        EXPECT_EQ(hfsPlus(file("V/" + name + hardLink)) == "the volume holds hard links",
                  !name.starts_with(".journal"))
            << name;
    }
}

TEST(VolumePlan, IsRefusedWithTheReason) {
    const std::string four = file("V/a") + file("V/b") + file("V/c") + file("V/d");
    const std::string deepest = folder("V/a") + folder("V/a/b") + file("V/a/b/c");
    const std::string longest = "V/" + std::string(255, 'a');
    for (const std::string& most :
         {four, deepest, file("V/a", "10000"), file(longest), link("V/a", "4095"), file("V/private-dir")})
        EXPECT_TRUE(hfsPlus(most).starts_with("V ")) << most;
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"the volume holds a name that cannot be used",
         {file("V/.."), file("V/."), file("V/"), file("V//a"), file("V/a\0b"s), file("V/\xFF"),
          file(longest + 'a'), folder("V/a") + file("V/a/../../b"), deepest + folder("V/a/b/c/d")}},
        {"the image holds more than one volume",
         {file("/etc/passwd"), file("../V/a"), file("V"), file("W/a")}},
        {"the volume holds a file in no folder: a/b",
         {file("V/a/b"), link("V/a", "4") + file("V/a/b"), file("V/a") + file("V/a/b")}},
        {"the volume holds two things of the same name: a",
         {file("V/a") + file("V/a"), link("V/a", "4") + folder("V/a")}},
        {"the volume holds two things of the same name: ", {folder("V")}},
        {"the volume holds a link to nowhere: a", {link("V/a", "0"), link("V/a", "4096")}},
        {"the volume holds something else than files, folders and links",
         {file("V/a", "0", "crw-------"), file("V/a", "0", "brw-------"), file("V/a", "0", "prw-------"),
          file("V/a", "0", "srw-------"), file("V/a", "0", "-rw-r--r--", "Folder = +\n"),
          file("V/a", "0", "drwxr-xr-x", "Folder = -\n"),
          file("V/a", "0", "drwxr-xr-x", "Symbolic Link = /tmp\n")}},
        {"the volume is too large",
         {file("V/a", "10001"), file("V/a", "6000") + file("V/b", "6000"), file("V/.journal", "10001"),
          file("V/a", "6000") + file("V/b", std::to_string(UINT64_MAX - 3000))}},
        {"the volume holds too many files", {four + file("V/e")}},
        {"the listing of the image cannot be understood",
         {file("V/a", "many"), file("V/a", "99999999999999999999"), file("V/a", "-1"), file("V/a", ""),
          "----------\n", "Size = 1\nPath = V/a\n", file("V/a", "1", "-rw-r--r--", "Path = V/b\n")}}};
    for (const auto& [reason, listings] : cases)
        for (const std::string& entries : listings)
            EXPECT_EQ(hfsPlus(entries), reason) << entries;
}

TEST(VolumePlan, IsRefusedForOtherThanTheOneVolumeThatTheImageWasTakenFor) {
    for (const char* name : {"", ".", "..", "a/b", "/", "../../a", "a\nb", ".hidden", "\xC3"})
        EXPECT_EQ(planned("Type = Iso\n----------\n", ImageKind::iso, name),
                  "the volume's name cannot be used");
    const std::string other = "7zz takes the volume for something else than it is";
    const std::tuple<ImageKind, std::string, std::string> cases[] = {
        {ImageKind::hfsPlus, "", "the listing of the image cannot be understood"},
        {ImageKind::hfsPlus, "Type = HFS\n", "the listing of the image cannot be understood"},
        {ImageKind::apfs, "Type = Iso\n----------\n", other},
        {ImageKind::udif, "Type = Dmg\n----------\n", other},
        {ImageKind::hfsPlus, "Type = Dmg\nType = HFS\n----------\n" + folder("V"), other},
        {ImageKind::hfsPlus, "Type = HFS\n----------\n", "the volume's name cannot be used"},
        {ImageKind::apfs, "Type = APFS\n{\nvolume_name: V\n}\n----------\n", "V 0\n"},
        {ImageKind::apfs, "Type = APFS\n{\nvolume_name: V\nvolume_name: V\n}\n----------\n",
         "the image holds more than one volume"}};
    for (const auto& [kind, text, result] : cases)
        EXPECT_EQ(planned(text, kind), result) << text;
}

} // namespace join::platform::hdiutil
