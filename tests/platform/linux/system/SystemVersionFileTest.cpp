#include "platform/linux/system/SystemVersionFile.h"

#include "platform/Application.h"
#include "platform/linux/files/LinuxFileManager.h"
#include "support/Child.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace join::platform;
using namespace join::test;

TEST(SystemVersionList, ReportsAVersionThatSaysNothingOfTheSystemsAgeAsEleven) {
    const auto reports = [](const std::string& version, const std::string& reported) {
        const std::string line = "<key>ProductVersion</key>\n\t<string>" + reported + "</string>";
        return systemVersionList("N", version).find(line) != std::string::npos;
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
        const std::string list = systemVersionList(name, "12");
        EXPECT_NE(list.find("<string>" + text + "</string>\n\t<key>ProductVersion"), std::string::npos)
            << list;
    }
}

TEST(SystemVersionFile, NamesThisSystemAndIsNeverReplaced) {
    const TemporaryFolder folder;
    const auto released = [&](const std::string& name) {
        const std::string said = folder / name;
        Child({.command = {"sh", "-c", ". /etc/os-release; printf %s \"$" + name + "\""}, .output = said})
            .wait();
        return contentsOf(said);
    };
    const std::string list = systemVersionList(released("NAME"), released("VERSION_ID"));
    const std::string made = folder / "root/System/Library/CoreServices/SystemVersion.plist";
    LinuxFileManager files{SystemRoot(folder / "root")};
    EXPECT_TRUE(makeSystemVersionFile(files));
    EXPECT_EQ(contentsOf(made), list);
    for (const std::string before : {"edited", ""}) { // by the user; by a power cut
        writeFile(made, before);
        EXPECT_TRUE(makeSystemVersionFile(files));
        EXPECT_EQ(contentsOf(made), before.empty() ? list : before);
    }
}
