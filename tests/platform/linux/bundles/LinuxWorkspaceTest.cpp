#include "platform/linux/bundles/LinuxWorkspace.h"

#include "platform/Exception.h"
#include "platform/linux/bundles/LinuxBundles.h"
#include "platform/linux/bundles/MountInfo.h"
#include "platform/linux/bundles/ProcessTable.h"
#include "platform/linux/documents/PlistPropertyLists.h"
#include "platform/linux/files/LinuxFileManager.h"
#include "support/Child.h"
#include "support/RecordingLog.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <list>
#include <sys/stat.h>

namespace join::test {
namespace {

using namespace platform;
namespace fs = std::filesystem;

class LinuxBundlesTest : public testing::Test {
protected:
    /// Makes an application with that text as its executable. Returns the executable's real path.
    std::string makeApplication(const std::string& name, const std::string& script = "#!/bin/sh\n") {
        const std::string contents = root.toReal("/Applications/" + name + ".app/Contents");
        writeFile(contents + "/Info.plist", listOf(name, "Run it"));
        return writeProgram(contents + "/MacOS/Run it", script);
    }
    static std::string listOf(const std::string& name, const std::string& executable,
                              const std::string& key = "CFBundleExecutable") {
        return "<plist><dict><key>CFBundleIdentifier</key><string>" + identifier(name) + "</string><key>" +
               key + "</key><string>" + executable + "</string></dict></plist>";
    }
    /// Unique: applications of other tests may run at the same time.
    static std::string identifier(const std::string& name) {
        return "com.example." + name + std::to_string(::getpid());
    }

    TemporaryFolder folder;
    SystemRoot root{folder / "root"};
    LinuxFileManager files{root};
    PlistPropertyLists lists;
    LinuxBundles bundles{files, lists, root};
};

TEST_F(LinuxBundlesTest, TheMainExecutableIsToldByTheSystemsPath) {
    makeApplication("A");
    for (const char* path : {"/Applications/A.app", "/Applications/A.app/", "//Applications/./A.app"})
        EXPECT_EQ(bundles.mainExecutable(path), "/Applications/A.app/Contents/MacOS/Run it");
    fs::create_directory_symlink(root.toReal("/Applications/A.app"), folder / "Link.app");
    EXPECT_EQ(bundles.mainExecutable(folder / "Link.app"), folder / "Link.app/Contents/MacOS/Run it");
}

TEST_F(LinuxBundlesTest, AnExecutableThatTheBundleDoesNotHoldIsRefused) {
    const fs::path programs = fs::path(makeApplication("A")).parent_path();
    const fs::path contents = programs.parent_path();
    const auto expectRefusal = [&](const std::string& list) {
        writeFile(contents / "Info.plist", list);
        EXPECT_THROW(bundles.mainExecutable("/Applications/A.app"), Exception) << list;
    };
    writeProgram(programs / "folder/Run");
    writeProgram(contents / "Outside");
    writeFile(programs / "data", "x");
    writeProgram(programs / "hollow", "");
    fs::create_symlink("/bin/sh", programs / "shell");
    ASSERT_EQ(::mkfifo((programs / "pipe").c_str(), 0755), 0);
    for (const std::string name : {"", ".", "..", "missing", "data", "pipe", "shell", "hollow", "folder",
                                   "/bin/sh", "./Run it", "folder/Run", "../Outside", "Run it/"})
        expectRefusal(listOf("A", name));
    expectRefusal(listOf("A", std::string("Run it\0x", 8)));
    expectRefusal(listOf("A", "Run it", "Other"));
    expectRefusal("<plist><string>text</string></plist>");
    expectRefusal("no list");
    EXPECT_THROW(bundles.mainExecutable("/Applications/Missing.app"), Exception);
    fs::remove_all(programs);
    fs::create_directory_symlink("/bin", programs);
    expectRefusal(listOf("A", "sh"));
}

class LinuxWorkspaceTest : public LinuxBundlesTest {
protected:
    /// How often each of the applications runs.
    std::vector<std::size_t> running() {
        std::vector<std::size_t> counts;
        for (const char* name : {"Shell", "Env", "Binary"})
            counts.push_back(workspace.runningApplications(identifier(name)).size());
        return counts;
    }

    RecordingLog log;
    std::function<bool(const Program&)> launch;
    LinuxWorkspace workspace{root, bundles, log, [this](const Program& program) { return launch(program); }};
};

TEST_F(LinuxWorkspaceTest, LaunchesTheMainExecutableByItsRealPathAndLogsARefusalOnce) {
    const std::string executable = makeApplication("Agent");
    const std::vector<std::string> arguments = {"-a", "b c"};
    const auto expectLaunch = [&](bool succeeds, const std::string& logged) {
        log.lines.clear();
        EXPECT_EQ(workspace.launchApplication("/Applications/Agent.app", arguments), succeeds);
        EXPECT_EQ(log.lines.size(), succeeds ? 0U : 1U);
        EXPECT_TRUE(succeeds || log.lines.back().ends_with(logged)) << log.lines.back();
    };
    launch = [&](const Program& program) {
        return program.path == executable && program.arguments == arguments;
    };
    expectLaunch(true, "");
    launch = [](const auto& /*program*/) { return false; };
    expectLaunch(false, executable + " did not start");
    launch = [](const auto& /*program*/) -> bool { throw Exception("no memory"); };
    expectLaunch(false, "Agent.app: no memory");
    fs::remove(executable);
    expectLaunch(false, "names: Run it");
}

TEST_F(LinuxWorkspaceTest, ScriptsAndProgramsOfABundleAreRunningApplicationsAndWhatShowsThemIsNot) {
    const std::string shell = makeApplication("Shell", "#!/bin/sh\necho\nread -r line < \"$1\"\n");
    const std::string throughEnv =
        makeApplication("Env", "#!/usr/bin/env -S sh -u\necho\nread -r line < \"$1\"\n");
    const std::string program = makeApplication("Binary");
    fs::copy_file("/usr/bin/tail", program, fs::copy_options::overwrite_existing);
    const std::string pipe = folder / "pipe"; // nobody ever writes to it
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const std::vector<std::string> commands[] = {{shell, pipe},         {shell, pipe},
                                                 {throughEnv, pipe},    {program, "-f", shell},
                                                 {"tail", "-f", shell}, {"tail", "-f", throughEnv}};
    using Counts = std::vector<std::size_t>;
    EXPECT_EQ(running(), (Counts{0, 0, 0}));
    {
        std::list<Child> children;
        for (const auto& command : commands) {
            const std::string output = folder / std::to_string(children.size());
            children.emplace_back(Launch{.command = command, .output = output});
            ASSERT_TRUE(eventually([&] { return !contentsOf(output).empty(); })); // the program itself runs
        }
        fs::remove(program);
        EXPECT_EQ(running(), (Counts{2, 1, 1}));
    }
    EXPECT_EQ(running(), (Counts{0, 0, 0}));
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
    fs::create_directories(volumes + "/of an earlier boot");
    workspace.mountedLocalVolumePaths();
    fs::create_directories(volumes + "/Tavo Agent");
    fs::create_directories(volumes + "/.unfinished");
    fs::create_directory_symlink("/", volumes + "/link");
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
    if (std::ranges::count(workspace.mountedLocalVolumePaths(), "/") == 0)
        GTEST_SKIP() << "the root file system is not on a local device here";
    const FileSystemInfo info = workspace.fileSystemInfo("/");
    EXPECT_TRUE(info.known && !info.unmountable && !info.type.empty());
}

TEST(MountInfo, TellsLocalVolumesFromOthers) {
    for (const auto& [source, type, local] : {std::tuple{"/dev/sda1", "ext4", true},
                                              {"pool/home", "zfs", true},
                                              {"proc", "proc", false},
                                              {"tmpfs", "tmpfs", false},
                                              {"server:/home", "nfs4", false},
                                              {"/dev/fuse", "fuse.sshfs", false},
                                              {"gvfsd-fuse", "fuse.gvfsd-fuse", false},
                                              {"disk.iso", "fuse.fuseiso", true},
                                              {"fusectl", "fusectl", false},
                                              {"/dev/sdb1", "fuseblk", true}})
        EXPECT_EQ(isLocalVolume({"/x", type, source, true}), local) << type;
}

TEST(MountInfo, OnlyWhatLiesInFoldersForVolumesIsUnmountable) {
    for (const char* path :
         {"/media/stick", "/mnt/x", "/run/media/ann/stick", "/Volumes/X", "/home/ann/stick"})
        EXPECT_TRUE(isUnmountable(path, "/home/ann")) << path;
    for (const char* path : {"/", "/home", "/home/ann", "/home/anna/x", "/boot", "/run/user/1000",
                             "/usr/local", "/media", "/mediation/x", "/mnt/"})
        EXPECT_FALSE(isUnmountable(path, "/home/ann")) << path;
    EXPECT_FALSE(isUnmountable("/srv/x", ""));
}

} // namespace
} // namespace join::test
