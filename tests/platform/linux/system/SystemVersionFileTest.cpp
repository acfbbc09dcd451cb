#include "platform/linux/system/SystemVersionFile.h"

#include "platform/linux/documents/NlohmannJson.h"
#include "platform/linux/documents/PlistPropertyLists.h"
#include "platform/linux/files/LinuxFileManager.h"
#include "support/Child.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace join::platform;
using namespace join::test;

TEST(SystemVersionList, HoldsAVersionThatIsNoneOrTooOldAsElevenAndNothingThatXmlCannotHold) {
    const auto expectList = [](const std::string& name, const std::string& version, const std::string& text,
                               const std::string& reported) {
        const auto list = PlistPropertyLists().parse(systemVersionList(name, version)).value_or(Value{});
        EXPECT_EQ(NlohmannJson().serialise(list),
                  R"({"ProductName":")" + text + R"(","ProductVersion":")" + reported + "\"}");
    };
    for (const char* version : {"12", "22.04", "11.2.3", "20240101"})
        expectList("N", version, "N", version);
    for (const char* version : {"10.8", "", "12-beta", "12.", "12.0.0.0", "-12", "99999999999999999"})
        expectList("N", version, "N", "11.0");
    expectList("A & B <i>'", "12", "A & B <i>'", "12");
    expectList("a\n\tb\x7F\xFF\xC3\xA9\xC2\x85\xEF\xBF\xBF\xF0\x9F\x90\xA7", "12",
               "ab\xC3\xA9\xF0\x9F\x90\xA7", "12");
}

TEST(SystemVersionFile, NamesThisSystemAndIsNeverReplaced) {
    const TemporaryFolder folder;
    const std::string list = systemVersionList(shell("/", ". /etc/os-release; printf %s \"$NAME\""),
                                               shell("/", ". /etc/os-release; printf %s \"$VERSION_ID\""));
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
