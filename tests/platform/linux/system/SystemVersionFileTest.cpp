#include "platform/linux/system/SystemVersionFile.h"

#include "platform/Application.h"
#include "platform/linux/files/LinuxFileManager.h"
#include "support/TemporaryFolder.h"

#include <array>
#include <gtest/gtest.h>

using namespace join::platform;
using namespace join::test;

TEST(OsRelease, ValuesAreWordsOfAShell) {
    const std::array<std::string, 3> cases[] = {
        {"NAME=\"Debian GNU/Linux\"\nVERSION_ID=\"12\"\nID=debian\n", "Debian GNU/Linux", "12"},
        {"# NAME=x\n\n  NAME=Fedora\r\nVERSION_ID=39", "Fedora", "39"},
        {"NAME='A \"B\" \\C'\nVERSION_ID='22.04'", "A \"B\" \\C", "22.04"},
        {"NAME=\"\\\"a\\\" \\$b \\`c \\\\d \\e\"", "\"a\" $b `c \\d \\e", ""},
        {"NAME=a\\ b c\nVERSION_ID=1\\\n", "a b", ""},
        {"NAME=first\nNAME=second\nNAME=\"unended\nNAME='unended\n", "second", ""},
        {"XNAME=a\nNAME2=b\nNAME\n=c\nPRETTY_NAME=d", "", ""},
        {"NAME=\nVERSION_ID=\n", "", ""},
        {"", "Linux", ""},
        {std::string(70'000, '#') + "\nNAME=far", "Linux", ""}};
    for (const auto& [text, name, version] : cases) {
        const SystemRelease release = parseOsRelease(text);
        EXPECT_EQ(release.name, name) << text;
        EXPECT_EQ(release.version, version) << text;
    }
}

TEST(SystemVersionList, ReportsAVersionThatSaysNothingOfTheSystemsAgeAsEleven) {
    const auto reports = [](const std::string& version, const std::string& reported) {
        const std::string list = systemVersionList({.name = "N", .version = version});
        return list.find("<key>ProductVersion</key>\n\t<string>" + reported + "</string>") !=
               std::string::npos;
    };
    for (const char* version : {"12", "22.04", "11.2.3", "20240101"})
        EXPECT_TRUE(reports(version, version)) << version;
    for (const char* version : {"10.8", "9.3", "", "rolling", "12-beta", "12.", ".12", "12..1", "12.0.0.0",
                                "-12", "99999999999999999", "12</string>"})
        EXPECT_TRUE(reports(version, "11.0")) << version;
}

TEST(SystemVersionList, HoldsNothingThatXmlCannotHold) {
    const std::pair<std::string, std::string> cases[] = {
        {"A & B <i>\"'", "A &amp; B &lt;i&gt;\"'"},
        {std::string("a\0b\x01\x1B[0m\n\tc\x7F", 12), "ab[0mc"},
        {"\xC3\xA9\xC2\x85\xEF\xBF\xBF\xF0\x9F\x90\xA7", "\xC3\xA9\xF0\x9F\x90\xA7"},
        {"z\xFF\xC3z\xC0\xAF\xED\xA0\x80z\xE2\x82", "zzz"}};
    for (const auto& [name, text] : cases) {
        const std::string list = systemVersionList({.name = name, .version = "12"});
        EXPECT_NE(list.find("<string>" + text + "</string>\n\t<key>ProductVersion"), std::string::npos)
            << list;
    }
}

TEST(SystemVersionFile, IsMadeFromTheFirstReleaseFileThereIsAndNeverReplaced) {
    const TemporaryFolder folder;
    LinuxFileManager files{SystemRoot(folder / "root")};
    const std::string made = folder / "root/System/Library/CoreServices/SystemVersion.plist";
    writeFile(folder / "os-release", "NAME=Tavo\nVERSION_ID=12.5\n");
    EXPECT_TRUE(makeSystemVersionFile(files, {folder / "missing", folder / "os-release"}));
    EXPECT_EQ(contentsOf(made), systemVersionList({.name = "Tavo", .version = "12.5"}));
    writeFile(made, "edited");
    EXPECT_TRUE(makeSystemVersionFile(files, {folder / "os-release"}));
    EXPECT_EQ(contentsOf(made), "edited");

    LinuxFileManager others{SystemRoot(folder / "other")};
    EXPECT_TRUE(makeSystemVersionFile(others, {folder / "missing"}));
    EXPECT_EQ(others.read(systemVersionPath), systemVersionList({.name = "Linux", .version = "11.0"}));
}
