#include "platform/linux/LinuxBundles.h"

#include "platform/Exception.h"
#include "platform/linux/LinuxFileManager.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace join::platform;
using namespace join::test;
namespace fs = std::filesystem;

namespace {

/// Reads "NAME=TEXT" as a dictionary of one text, "text" as a text and anything else as no list.
class PropertyListsOfOneName : public PropertyLists {
public:
    std::optional<Value> parse(std::string_view bytes) override {
        const auto sign = bytes.find('=');
        if (sign == std::string_view::npos)
            return bytes == "text" ? std::optional(Value{std::string(bytes)}) : std::nullopt;
        const std::string name(bytes.substr(0, sign));
        return Value{Value::Dictionary{{name, Value{std::string(bytes.substr(sign + 1))}}}};
    }
};

class BundlesOfLinux : public testing::Test {
protected:
    BundlesOfLinux() { writeProgram(contents_ + "/MacOS/Run"); }

    static void writeProgram(const std::string& path) {
        ::chmod(writeFile(path, "#!/bin/sh\n").c_str(), 0755);
    }

    void writeList(std::string_view list) { writeFile(contents_ + "/Info.plist", list); }

    TemporaryFolder folder_;
    SystemRoot root_{folder_ / "root"};
    LinuxFileManager files_{root_};
    PropertyListsOfOneName lists_;
    LinuxBundles bundles_{files_, lists_, root_};
    const std::string path_ = "/Applications/A.app";
    const std::string contents_ = folder_ / "root/Applications/A.app/Contents";
};

} // namespace

TEST_F(BundlesOfLinux, TheMainExecutableIsToldByTheSystemsPath) {
    writeList("CFBundleExecutable=Run");
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
    fs::create_symlink("/bin/sh", programs + "shell");
    ASSERT_EQ(::mkfifo((programs + "pipe").c_str(), 0755), 0);
    const std::string names[] = {
        "",       ".",       "..",    "missing",    "data",       "pipe", "shell",
        "folder", "/bin/sh", "./Run", "folder/Run", "../Outside", "Run/", std::string("Run\0x", 5)};
    for (const std::string& name : names) {
        writeList("CFBundleExecutable=" + name);
        EXPECT_THROW(bundles_.mainExecutable(path_), Exception) << name;
    }
    for (const char* list : {"Other=Run", "text", "no list"}) {
        writeList(list);
        EXPECT_THROW(bundles_.mainExecutable(path_), Exception) << list;
    }
    EXPECT_THROW(bundles_.mainExecutable("/Applications/Missing.app"), Exception);
    fs::remove_all(programs);
    fs::create_directory_symlink("/bin", contents_ + "/MacOS");
    writeList("CFBundleExecutable=sh");
    EXPECT_THROW(bundles_.mainExecutable(path_), Exception);
}
