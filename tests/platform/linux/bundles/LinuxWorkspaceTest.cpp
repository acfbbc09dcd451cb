#include "platform/linux/bundles/LinuxWorkspace.h"

#include "platform/Exception.h"
#include "platform/linux/bundles/LinuxBundles.h"
#include "platform/linux/bundles/ProcessTable.h"
#include "platform/linux/documents/PlistPropertyLists.h"
#include "platform/linux/files/LinuxFileManager.h"
#include "support/Child.h"
#include "support/RecordingLog.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace join::platform;
using namespace join::test;

/// A child process that writes a line as soon as it runs its program, and ends with this object.
struct RunningProgram {
    explicit RunningProgram(const std::vector<std::string>& command)
        : child({.command = command, .output = folder / "output"}) {
        EXPECT_TRUE(eventually([this] { return !contentsOf(folder / "output").empty(); })) << command[0];
    }

    TemporaryFolder folder;
    Child child;
};

class LinuxWorkspaceTest : public testing::Test {
protected:
    TemporaryFolder folder;
    SystemRoot root{folder / "root"};
    LinuxFileManager files{root};
    PlistPropertyLists lists;
    LinuxBundles bundles{files, lists, root};
    RecordingLog log;
    std::vector<Program> launched;
    bool launchSucceeds = true;
    LinuxWorkspace workspace{root, bundles, log, [this](const Program& program) {
                                 launched.push_back(program);
                                 return launchSucceeds;
                             }};

    /// Makes an application with that text as its executable. Returns the executable's real path.
    std::string makeApplication(const std::string& name, const std::string& script) {
        const std::string bundle = root.toReal("/Applications/" + name + ".app");
        writeFile(
            bundle + "/Contents/Info.plist",
            "<plist><dict><key>CFBundleIdentifier</key><string>" + identifier(name) +
                "</string><key>CFBundleExecutable</key><string>the program of it</string></dict></plist>");
        return writeProgram(bundle + "/Contents/MacOS/the program of it", script);
    }

    /// How often each of them runs.
    std::vector<std::size_t> running(const std::vector<std::string>& names) {
        std::vector<std::size_t> counts;
        for (const std::string& name : names)
            counts.push_back(workspace.runningApplications(identifier(name)).size());
        return counts;
    }

    /// Unique: applications of other tests may run at the same time.
    static std::string identifier(const std::string& name) {
        return "com.example." + name + std::to_string(::getpid());
    }
};

TEST_F(LinuxWorkspaceTest, LaunchesTheMainExecutableByItsRealPathAndLogsARefusalOnce) {
    EXPECT_FALSE(workspace.launchApplication("/Applications/Missing.app", {}));
    const std::string executable = makeApplication("Agent", "#!/bin/sh\n");
    EXPECT_TRUE(workspace.launchApplication("/Applications/Agent.app", {"-a", "b c"}));
    ASSERT_EQ(launched.size(), 1U);
    EXPECT_EQ(launched[0].path, executable);
    EXPECT_EQ(launched[0].arguments, (std::vector<std::string>{"-a", "b c"}));
    launchSucceeds = false;
    EXPECT_FALSE(workspace.launchApplication("/Applications/Agent.app", {}));
    LinuxWorkspace throwing(root, bundles, log, [](const Program&) -> bool { throw Exception("no memory"); });
    EXPECT_FALSE(throwing.launchApplication("/Applications/Agent.app", {}));
    const char* parts[] = {"Missing.app", "Agent.app", "no memory"};
    ASSERT_EQ(log.lines.size(), std::size(parts));
    for (auto line = log.lines.begin(); const char* part : parts)
        EXPECT_NE(line++->find(part), std::string::npos) << part;
}

TEST_F(LinuxWorkspaceTest, ScriptsAndProgramsOfABundleAreRunningApplicationsAndWhatShowsThemIsNot) {
    const std::string shell = makeApplication("Shell", "#!/bin/sh\necho\nread -r line < \"$1\"\n");
    const std::string throughEnv =
        makeApplication("Env", "#!/usr/bin/env -S sh -u\necho\nread -r line < \"$1\"\n");
    const std::string program = makeApplication("Binary", "");
    std::filesystem::copy_file("/usr/bin/tail", program, std::filesystem::copy_options::overwrite_existing);
    const std::string pipe = folder / "pipe"; // nobody ever writes to it
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const std::string text = writeFile(folder / "text", "x\n");

    using Counts = std::vector<std::size_t>;
    EXPECT_EQ(running({"Shell", "Env", "Binary"}), (Counts{0, 0, 0}));
    {
        const RunningProgram first({shell, pipe});
        const RunningProgram second({shell, pipe});
        const RunningProgram third({throughEnv, pipe});
        const RunningProgram fourth({program, "-f", text});
        const RunningProgram viewer({"tail", "-f", shell}); // only shows the script
        const RunningProgram other({"tail", "-f", throughEnv});
        std::filesystem::remove(program);
        EXPECT_EQ(running({"Shell", "Env", "Binary"}), (Counts{2, 1, 1}));
    }
    EXPECT_EQ(running({"Shell", "Env", "Binary"}), (Counts{0, 0, 0}));
}

TEST(ProcessTable, AProgramBelongsToTheInnermostBundle) {
    for (const auto& [path, bundle] :
         {std::pair{"/a/X.app/Contents/MacOS/x", "/a/X.app"},
          {"/a/X.app/Contents/MacOS/sub/x", "/a/X.app"},
          {"/X.app/Contents/MacOS/Y.app/Contents/MacOS/y", "/X.app/Contents/MacOS/Y.app"},
          {"/X.app/Contents/MacOS/", ""},
          {"/X.app/Contents/Resources/x", ""},
          {"X.app/Contents/MacOS/x", ""},
          {"", ""}})
        EXPECT_EQ(bundleHolding(path), bundle) << path;
}

TEST_F(LinuxWorkspaceTest, FoldersBelowVolumesAreRemovableVolumes) {
    const std::string volumes = root.toReal("/Volumes");
    std::filesystem::create_directories(volumes + "/of an earlier boot");
    workspace.mountedLocalVolumePaths();
    std::filesystem::create_directories(volumes + "/Tavo Agent");
    std::filesystem::create_directories(volumes + "/.unfinished");
    std::filesystem::create_directory_symlink("/", volumes + "/link");
    writeFile(volumes + "/file", "");

    const auto paths = workspace.mountedLocalVolumePaths();
    ASSERT_FALSE(paths.empty());
    EXPECT_EQ(paths[0], "/Volumes/Tavo Agent");
    EXPECT_EQ(std::ranges::count_if(paths, [](auto& path) { return path.starts_with("/Volumes/"); }), 1);
    const FileSystemInfo info = workspace.fileSystemInfo("/Volumes/Tavo Agent");
    EXPECT_TRUE(info.known && info.removable && info.unmountable && info.writable);
    for (const char* path :
         {"/Volumes/link", "/Volumes/file", "/Volumes", "/Volumes/.", "", "Tavo Agent", "/nowhere"})
        EXPECT_FALSE(workspace.fileSystemInfo(path).known) << path;
}

TEST_F(LinuxWorkspaceTest, TheSystemsOwnVolumeStays) {
    const auto paths = workspace.mountedLocalVolumePaths();
    if (std::find(paths.begin(), paths.end(), "/") == paths.end())
        GTEST_SKIP() << "the root file system is not on a local device here";
    const FileSystemInfo info = workspace.fileSystemInfo("/");
    EXPECT_TRUE(info.known);
    EXPECT_FALSE(info.unmountable);
    EXPECT_FALSE(info.type.empty());
}

} // namespace
