#include "platform/linux/bundles/LinuxWorkspace.h"

#include "platform/Exception.h"
#include "platform/linux/bundles/BootMark.h"
#include "platform/linux/bundles/LinuxBundles.h"
#include "platform/linux/bundles/MountInfo.h"
#include "platform/linux/bundles/ProcessTable.h"
#include "platform/linux/documents/PlistPropertyLists.h"
#include "platform/linux/files/Descriptor.h"
#include "platform/linux/files/LinuxFileManager.h"
#include "support/Child.h"
#include "support/OrdinaryUser.h"
#include "support/RecordingLog.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <future>
#include <gtest/gtest.h>
#include <list>
#include <sys/file.h>
#include <sys/stat.h>

namespace join::test {

using namespace platform;
using namespace std::string_literals;
using Lines = std::vector<std::string>;

class LinuxWorkspaceTest : public testing::Test {
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

    bool endVolumesIn(const std::string& boot) const {
        return endVolumesOfEarlierBoots(root, writeFile(folder / "boot_id", boot));
    }

    TemporaryFolder folder;
    SystemRoot root{folder / "root"};
    const std::string volumes = root.toReal("/Volumes");
    LinuxFileManager files{root};
    PlistPropertyLists lists;
    LinuxBundles bundles{files, lists, root};
    RecordingLog log;
    std::function<bool(const Program&)> launch;
    LinuxWorkspace workspace{root, bundles, log, [this](const Program& program) { return launch(program); }};
};

TEST_F(LinuxWorkspaceTest, AnExecutableThatTheBundleDoesNotHoldIsRefused) {
    const fs::path programs = fs::path(makeApplication("A")).parent_path();
    const fs::path contents = programs.parent_path();
    for (const char* path : {"/Applications/A.app", "/Applications/A.app/", "//Applications/./A.app"})
        EXPECT_EQ(bundles.mainExecutable(path), "/Applications/A.app/Contents/MacOS/Run it");
    fs::create_directory_symlink(contents.parent_path(), folder / "Link.app");
    EXPECT_EQ(bundles.mainExecutable(folder / "Link.app"), folder / "Link.app/Contents/MacOS/Run it");

    const auto refusal = [&](const std::string& list) {
        writeFile(contents / "Info.plist", list);
        return refusalOf([this] { bundles.mainExecutable("/Applications/A.app"); });
    };
    shell(programs, R"(mkdir folder; mkfifo -m 755 pipe; ln -s /bin/sh shell; install /dev/null hollow
                       cp 'Run it' folder/Run; cp 'Run it' ../Outside; echo > data)");
    const std::string notHeld = "The bundle /Applications/A.app does not hold the executable that it names: ";
    for (const std::string name : {"", ".", "..", "missing", "data", "pipe", "shell", "hollow", "folder",
                                   "/bin/sh", "./Run it", "folder/Run", "../Outside", "Run it/"})
        EXPECT_EQ(refusal(listOf("A", name)), notHeld + name);
    EXPECT_EQ(refusal(listOf("A", "Run it", "Other")), "The bundle /Applications/A.app names no executable");
    for (const std::string& list :
         {listOf("A", "Run it\0x"s), "<plist><string>text</string></plist>"s, "no list"s})
        EXPECT_EQ(refusal(list), "There is no application bundle at /Applications/A.app") << list;
    fs::remove_all(programs);
    fs::create_directory_symlink("/bin", programs);
    EXPECT_EQ(refusal(listOf("A", "sh")), notHeld + "sh");
}

TEST_F(LinuxWorkspaceTest, LaunchesTheMainExecutableByItsRealPathAndLogsARefusalOnce) {
    const std::string executable = makeApplication("Agent");
    const auto isLaunched = [this] { return workspace.launchApplication("/Applications/Agent.app", {"-a"}); };
    launch = [&](const Program& program) {
        return program.path == executable && program.arguments == Lines{"-a"};
    };
    EXPECT_TRUE(isLaunched());
    launch = [](const auto& /*program*/) { return false; };
    EXPECT_FALSE(isLaunched());
    launch = [](const auto& /*program*/) -> bool { throw Exception("no memory"); };
    EXPECT_FALSE(isLaunched());
    EXPECT_EQ(log.lines, (Lines{"Cannot launch /Applications/Agent.app: " + executable + " did not start",
                                "Cannot launch /Applications/Agent.app: no memory"}));
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
    const auto running = [this] {
        std::string counts;
        for (const char* name : {"Shell", "Env", "Binary"})
            counts += std::to_string(workspace.runningApplications(identifier(name)).size());
        return counts;
    };
    EXPECT_EQ(running(), "000");
    {
        std::list<Child> children;
        for (const auto& command : commands) {
            const std::string output = folder / std::to_string(children.size());
            children.emplace_back(Launch{.command = command, .output = output});
            ASSERT_TRUE(eventually([&] { return !contentsOf(output).empty(); })); // the program itself runs
        }
        fs::remove(program);
        EXPECT_EQ(running(), "211");
    }
    EXPECT_EQ(running(), "000");
}

TEST(ProcessTable, AProgramBelongsToTheInnermostBundle) {
    EXPECT_EQ(bundleHolding("/a/X.app/Contents/MacOS/sub/x"), "/a/X.app");
    EXPECT_EQ(bundleHolding("/X.app/Contents/MacOS/Y.app/Contents/MacOS/y"), "/X.app/Contents/MacOS/Y.app");
    for (const char* path :
         {"/X.app/Contents/MacOS/", "/X.app/Contents/Resources/x", "X.app/Contents/MacOS/x", ""})
        EXPECT_EQ(bundleHolding(path), "") << path;
}

TEST_F(LinuxWorkspaceTest, FoldersBelowVolumesAreRemovableVolumesAndTheSystemsOwnStays) {
    fs::create_directories(volumes + "/of an earlier boot");
    workspace.mountedLocalVolumePaths();
    shell(volumes, "mkdir 'Tavo Agent' B .unfinished; ln -s / link; touch file");

    const auto paths = workspace.mountedLocalVolumePaths();
    ASSERT_GE(paths.size(), 2U);
    EXPECT_EQ(Lines(paths.begin(), paths.begin() + 2), (Lines{"/Volumes/B", "/Volumes/Tavo Agent"}));
    const FileSystemInfo info = workspace.fileSystemInfo("/Volumes/Tavo Agent");
    EXPECT_TRUE(info.known && info.removable && info.unmountable && info.writable);
    EXPECT_EQ(info.description + ", a " + info.type, "opened disk image, a disk image");
    for (const char* path :
         {"/Volumes/link", "/Volumes/file", "/Volumes", "/Volumes/.", "", "Tavo Agent", "/nowhere"})
        EXPECT_FALSE(workspace.fileSystemInfo(path).known) << path;

    if (std::find(paths.begin(), paths.end(), "/") == paths.end())
        GTEST_SKIP() << "the root file system is not on a local device here";
    const FileSystemInfo system = workspace.fileSystemInfo("/");
    EXPECT_TRUE(system.known && !system.unmountable && !system.type.empty());
}

using BootMarkTest = LinuxWorkspaceTest;

TEST_F(BootMarkTest, VolumesLiveTillTheNextBoot) {
    EXPECT_FALSE(endVolumesIn("first")); // there is no root
    fs::create_directories(volumes);
    shell(volumes, "mkdir .unfinished; ln -s /tmp link");
    // At first nobody knows when they were mounted.
    for (const auto& [boot, left] : {std::pair{"first", 0}, {"first", 1}, {"", 1}, {"second", 0}}) {
        fs::create_directory(volumes + "/V");
        EXPECT_TRUE(endVolumesIn(boot));
        EXPECT_EQ(countIn(volumes), left) << boot;
    }
    fs::create_directory(volumes + "/V");
    for (const std::string& closed : {volumes, root.path()}) { // shown, and so not to be passed for new
        ASSERT_EQ(::chmod(closed.c_str(), 0555), 0);
        const OrdinaryUser user;
        EXPECT_FALSE(endVolumesIn("third")) << closed;
        ASSERT_EQ(::chmod(closed.c_str(), 0755), 0);
    }
    EXPECT_TRUE(endVolumesIn("third"));
    EXPECT_TRUE(fs::is_empty(volumes));
}

TEST_F(BootMarkTest, WhoWaitsForAnotherLeavesWhatThatOneHasMountedSince) {
    fs::create_directories(volumes + "/old");
    const Descriptor other = openForReading(AT_FDCWD, root.path().c_str(), O_DIRECTORY);
    ASSERT_EQ(::flock(other.get(), LOCK_EX), 0);
    auto waiting = std::async(std::launch::async, [this] { return endVolumesIn("boot"); });
    const std::string waits = "-> FLOCK  ADVISORY  WRITE " + std::to_string(::getpid()) + " ";
    ASSERT_TRUE(eventually([&] { return contentsOf("/proc/locks").find(waits) != std::string::npos; }));
    shell(root.path(), "printf boot > Volumes.boot; mkdir Volumes/new");
    ASSERT_EQ(::flock(other.get(), LOCK_UN), 0);
    EXPECT_TRUE(waiting.get());
    EXPECT_EQ(countIn(volumes), 2);
}

TEST(MountInfo, TellsLocalVolumesFromOthers) {
    const std::pair<const char*, std::string> sourcesAndTypes[] = {
        {"/dev/sda1", "ext4"},      {"server:/home", "nfs4"}, {"pool/home", "zfs"},
        {"/dev/sdb1", "fuseblk"},   {"fusectl", "fusectl"},   {"disk.iso", "fuse.fuseiso"},
        {"/dev/fuse", "fuse.sshfs"}};
    std::string local;
    for (const auto& [source, type] : sourcesAndTypes)
        local += isLocalVolume({"/x", type, source, true}) ? type + " " : "";
    EXPECT_EQ(local, "ext4 zfs fuseblk fuse.fuseiso ");
}

TEST(MountInfo, OnlyWhatLiesInFoldersForVolumesIsUnmountable) {
    for (const char* path :
         {"/media/stick", "/mnt/x", "/run/media/ann/stick", "/Volumes/X", "/home/ann/stick"})
        EXPECT_TRUE(isUnmountable(path, "/home/ann")) << path;
    for (const char* path : {"/", "/home/ann", "/home/anna/x", "/run/user/1000", "/media", "/mnt/"})
        EXPECT_FALSE(isUnmountable(path, "/home/ann")) << path;
    EXPECT_FALSE(isUnmountable("/srv/x", ""));
}

} // namespace join::test
