#include "platform/linux/bundles/LinuxBundles.h"

#include "platform/Exception.h"
#include "platform/linux/documents/PlistPropertyLists.h"
#include "platform/linux/files/LinuxFileManager.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace join::platform;
using namespace join::test;
namespace fs = std::filesystem;

namespace {

class BundlesOfLinux : public testing::Test {
protected:
    BundlesOfLinux() { writeProgram(contents_ + "/MacOS/Run"); }

    void expectRefusal(const std::string& list) {
        writeFile(contents_ + "/Info.plist", list);
        EXPECT_THROW(bundles_.mainExecutable(path_), Exception) << list;
    }
    static std::string listOf(const std::string& name, const std::string& key = "CFBundleExecutable") {
        return "<plist><dict><key>" + key + "</key><string>" + name + "</string></dict></plist>";
    }

    TemporaryFolder folder_;
    SystemRoot root_{folder_ / "root"};
    LinuxFileManager files_{root_};
    PlistPropertyLists lists_;
    LinuxBundles bundles_{files_, lists_, root_};
    const std::string path_ = "/Applications/A.app";
    const std::string contents_ = folder_ / "root/Applications/A.app/Contents";
};

} // namespace

TEST_F(BundlesOfLinux, TheMainExecutableIsToldByTheSystemsPath) {
    writeFile(contents_ + "/Info.plist", listOf("Run"));
    for (const char* path : {"/Applications/A.app", "/Applications/A.app/", "//Applications/./A.app"})
        EXPECT_EQ(bundles_.mainExecutable(path), "/Applications/A.app/Contents/MacOS/Run");
    fs::create_directory_symlink(folder_ / "root/Applications/A.app", folder_ / "Link.app");
    EXPECT_EQ(bundles_.mainExecutable(folder_ / "Link.app"), folder_ / "Link.app/Contents/MacOS/Run");
}

TEST_F(BundlesOfLinux, AnExecutableThatTheBundleDoesNotHoldIsRefused) {
    const std::string programs = contents_ + "/MacOS/";
    writeProgram(programs + "folder/Run");
    writeProgram(contents_ + "/Outside");
    writeFile(programs + "data", "x");
    writeProgram(programs + "hollow", "");
    fs::create_symlink("/bin/sh", programs + "shell");
    ASSERT_EQ(::mkfifo((programs + "pipe").c_str(), 0755), 0);
    const std::string names[] = {"",      ".",          "..",         "missing", "data",
                                 "pipe",  "shell",      "hollow",     "folder",  "/bin/sh",
                                 "./Run", "folder/Run", "../Outside", "Run/",    std::string("Run\0x", 5)};
    for (const std::string& name : names)
        expectRefusal(listOf(name));
    expectRefusal(listOf("Run", "Other"));
    expectRefusal("<plist><string>text</string></plist>");
    expectRefusal("no list");
    EXPECT_THROW(bundles_.mainExecutable("/Applications/Missing.app"), Exception);
    fs::remove_all(programs);
    fs::create_directory_symlink("/bin", contents_ + "/MacOS");
    expectRefusal(listOf("sh"));
}
