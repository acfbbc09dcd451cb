#include "platform/linux/helpers/hdiutil/Mount.h"

#include "images/DiskImage.h"
#include "images/HostileImage.h"
#include "images/MacVolume.h"
#include "images/UdifWriter.h"
#include "platform/Exception.h"
#include "platform/linux/helpers/hdiutil/SevenZip.h"
#include "support/Child.h"
#include "support/RefusedSystemCall.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <filesystem>
#include <future>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

static fsblkcnt_t kibibytesOnDisk = UINT32_MAX;

/// Takes the place of the system's function.
extern "C" int statvfs(const char* /*path*/, struct statvfs* disk) noexcept {
    *disk = {};
    disk->f_frsize = 1024;
    disk->f_bavail = kibibytesOnDisk;
    return 0;
}

namespace join::platform::hdiutil {

namespace fs = std::filesystem;
using namespace std::string_literals;
using test::contentsOf;
using test::writeFile;
using Made = tools::ImageKind;

namespace {

/// Type, permissions, time, link and content of everything below a folder. 7zz shows "_" for a line feed in a
/// name.
std::string treeOf(const std::string& top) {
    return test::shell(top, "export LC_ALL=C\n"
                            "find . -mindepth 1 -printf '%P %M %Ts %l\\0' | sort -z | tr '\\n\\0' '_\\n'\n"
                            "find . -type f -print0 | sort -z | xargs -0 tail -vn +1 | tr '\\n' _ | cksum");
}

} // namespace

class Mount : public testing::Test {
protected:
    Mount() { fs::create_directory(in_); }

    /// The content of the volume "Tavo": a bundle with every sort of link, text, noise, runs of zeros and of
    /// another byte over several chunks, and names as Macs have them and a forger might.
    void makeContent() const {
        for (const char* name :
             {"Icon\r", ".DS_Store", ".Trashes/501/old", ".fseventsd/fseventsd-uuid", ".VolumeIcon.icns",
              ".background/picture.png", "bell\a and tab\t", "[HFS+]", "My HFS+ Private Data",
              "folder/.journal", "a\n\nPath = b\nSize = 0\n", "Tavo.app/Contents/MacOS/Tavo"})
            writeFile(in_ + "/" + name, name);
        const std::string app = in_ + "/Tavo.app/Contents/";
        fs::permissions(app + "MacOS/Tavo", fs::perms(0750));
        writeFile(app + "empty", "");
        writeFile(app + "runs", std::string(600000, '\0') + std::string(300000, 't'));
        writeFile(in_ + "/noise * [1]", tools::noise(10000));
        fs::permissions(in_ + "/noise * [1]", fs::perms(0444));
        fs::create_directory(in_ + "/none");
        fs::create_symlink("Contents/MacOS", in_ + "/Tavo.app/relative");
        fs::create_symlink("../../Tavo.app/Contents/empty", app + "up");
        fs::create_symlink("/Applications", in_ + "/Applications");
        fs::create_symlink("/missing/../../..", in_ + "/dangling");
        test::Child({.command = {"find", in_, "-exec", "touch", "-hd", "2020-02-29", "{}", "+"}}).wait();
    }

    void makeImage(Made kind) const { tools::makeDiskImage(in_, "Tavo", kind, image_); }

    /// Returns a stand-in of 7zz. It knows an image of Apple's format.
    std::string standInThat(const std::string& name) const {
        fs::create_symlink(SEVEN_ZIP_STAND_IN, folder_ / name);
        return folder_ / name;
    }

    /// Returns the mount point, or why there is none. Runs on a thread of its own, confined from then on.
    std::string mount() const {
        try {
            return std::async(std::launch::async, [this] { return mountImage(image_, settings_); }).get();
        } catch (const Exception& refusal) {
            return refusal.what();
        }
    }

    bool isEmpty() const {
        std::error_code isMissing;
        return std::ranges::all_of(fs::recursive_directory_iterator(folder_ / "root", isMissing),
                                   [](const auto& entry) { return entry.path().stem() == "Volumes"; });
    }

    void expectShown(const std::string& image, const std::string& what) const {
        writeFile(image_, image);
        EXPECT_EQ(mount(), "/Volumes/Tavo") << what;
        EXPECT_EQ(treeOf(volume_), treeOf(in_)) << what;
    }

    void expectRefused(const std::string& reason) const {
        EXPECT_EQ(mount(), reason);
        EXPECT_TRUE(isEmpty()) << reason;
    }

    test::TemporaryFolder folder_;
    std::string in_ = folder_ / "in";
    std::string image_ = folder_ / "image";
    std::string volume_ = folder_ / "root/Volumes/Tavo";
    MountSettings settings_{.root = SystemRoot(folder_ / "root"), .sevenZip = pathOf7zz()};
};

TEST_F(Mount, ShowsImagesOfEveryKindAndAsMacsMakeThem) {
    makeContent();
    const std::string outside = writeFile(folder_ / "outside/file", "x");
    fs::create_directories(folder_ / "root/Volumes");
    fs::create_directory_symlink(folder_ / "outside", volume_); // has the volume's name
    for (const auto& [name, kind] : tools::imageKinds()) {
        makeImage(kind);
        expectShown(contentsOf(image_), std::string(name));
    }
    const std::string volume = tools::macVolume({in_, "Tavo"});
    for (const auto map :
         {tools::PartitionMap::none, tools::PartitionMap::apple, tools::PartitionMap::guid}) {
        const std::vector<tools::DiskPart> disk = tools::partitionedDisk(volume, map);
        const std::string writable = tools::udifOf(disk, {.isListed = false});
        const std::string what = "map " + std::to_string(static_cast<int>(map));
        expectShown(writable.substr(0, writable.size() - tools::udifTrailerSize), what + ", bare");
        expectShown(tools::udifOf(disk, {}), what);
        expectShown(tools::udifOf(disk, {.hasLicence = true, .isSigned = true}), what + ", signed");
        expectShown(writable, what + ", writable");
    }
    EXPECT_FALSE(fs::is_symlink(volume_));
    EXPECT_TRUE(fs::exists(outside));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_ / "root"), {}), 2); // with the mark of the boot
}

TEST_F(Mount, TellsWhyAnImageIsRefusedAndLeavesNothing) {
    writeFile(in_ + "/file", "x");
    const std::string volume = tools::macVolume({in_, "Tavo"});
    const std::string name = "disk image (Apple_HFS : 1)";
    const std::string fat = std::string(54, '\0') + "FAT16   " + std::string(450, '\0');
    const std::string adc = tools::udifOf(volume, tools::ChunkKind::adc);
    const std::string writable = tools::udifOf({{name, volume}}, {.isListed = false});
    const std::string checksum = "the image is damaged: its checksums are wrong";
    std::vector<tools::DiskPart> helpers;
    for (const char* type : {"DDM", "Apple_partition_map", "Apple_Driver_ATAPI", "Apple_Patches", "MBR",
                             "Primary GPT Header", "C12A7328-F81F-11D2-BA4B-00A0C93EC93B", "Apple_Free"})
        helpers.push_back({"part ("s + type + " : 1)", std::string(512, '\0')});
    const std::pair<std::string, std::string> cases[] = {
        {tools::udifOf({{"disk image (DOS_FAT_16 : 1)", fat}}, {}),
         "the image holds another file system: FAT"},
        {tools::macVolumeWithHardLinks({in_, "Tavo"}), "the volume holds hard links"},
        {tools::udifOf({{name, volume}, {name, volume}}, {}), "the image holds more than one volume"},
        {tools::udifOf(helpers, {}), "the image holds no volume"},
        {tools::withTooManyChunks(tools::udifOf(helpers, {})), "the image is damaged: its table is wrong"},
        {tools::withFlippedByte(adc, adc.size() - 512 + 91), checksum},
        {tools::withFlippedByte(writable, writable.size() / 2), checksum}};
    for (const auto& [image, reason] : cases) {
        writeFile(image_, image);
        expectRefused(reason);
    }
    fs::remove(image_);
    ::mkfifo(image_.c_str(), 0600);
    expectRefused("the image is no file");
}

TEST_F(Mount, TakesTheRicherPartOfADiscThatHoldsItsFilesTwice) {
    makeContent();
    const auto discWith = [this](const std::string& one, const std::string& other) {
        test::shell(folder_.path(), "xorrisofs -quiet -V Tavo " + one + " " + other + " -o image in 2>&1");
        return contentsOf(image_);
    };
    for (const char* other : {"-J", "-hfsplus"}) {
        const std::string disc = discWith("-R", other);
        expectShown(disc, other);
        expectShown(tools::udifOf({{"whole disk (Apple_ISO : 0)", disc}}, {}), other);
    }
    // Without anything better Joliet's name of the volume counts, which can be anything.
    const std::string blanks(28, ' ');
    writeFile(image_, tools::replaced(discWith("-J", "--norock"), "Tavo" + blanks, "TAVO" + blanks));
    EXPECT_EQ(mount(), "/Volumes/Tavo");
    EXPECT_EQ(contentsOf(volume_ + "/noise _ [1]"), tools::noise(10000)); // Joliet has no "*"
}

TEST_F(Mount, MakesNothingOutsideTheVolumeThatAHostileImageNames) {
    fs::create_directories(folder_ / "target");
    for (const tools::HostileImage& hostile : tools::maliciousImages(folder_ / "target")) {
        writeFile(image_, hostile.bytes);
        const std::string outcome = mount();
        if (outcome.starts_with('/'))
            fs::remove_all(folder_ / ("root" + outcome));
        EXPECT_TRUE(isEmpty()) << hostile.name;
        EXPECT_TRUE(fs::is_empty(folder_ / "target")) << hostile.name;
        EXPECT_EQ(std::distance(fs::directory_iterator(folder_.path()), {}), 4) << hostile.name;
    }
}

TEST_F(Mount, LeavesNothingWhen7zzFailsOrHangs) {
    makeImage(Made::udifAdc);
    settings_.sevenZip = standInThat("succeeds");
    EXPECT_EQ(mount(), "/Volumes/Tavo");
    EXPECT_EQ(contentsOf(volume_ + "/way"), "text"); // through a link whose text ends with NUL
    fs::remove_all(volume_);
    writeFile(folder_ / "root/.hdiutil.4194305.1.partial/file", "x"); // left by a process that is no more
    const std::pair<std::string, std::string> cases[] = {
        {"l", "7zz cannot read the image"},
        {"t", "the image is damaged: its checksums are wrong"},
        {"x", "the image is damaged: 7zz cannot open all of it"}};
    for (const auto& [command, reason] : cases) {
        for (const std::string end : {"-fails", "-dies", "-hangs"}) {
            settings_.sevenZip = standInThat(command + end);
            settings_.allowed = std::chrono::milliseconds(end == "-hangs" ? 500 : 30'000);
            expectRefused(end == "-hangs" ? "it took too long" : reason);
            EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a process of " << command << end;
        }
    }
    settings_.sevenZip = standInThat("x-nothing");
    expectRefused("the image is damaged: its volume is cut off");
    settings_.sevenZip = standInThat("x-more");
    expectRefused("the image is damaged: the volume's files are longer than listed");
    settings_.sevenZip = folder_ / "missing";
    expectRefused("Cannot start " + settings_.sevenZip + ": No such file or directory");
}

TEST_F(Mount, CannotReachWhatItDoesNotNeed) {
    makeImage(Made::udifZlib);
    std::async(std::launch::async, [this] {
        EXPECT_EQ(mountImage(image_, settings_), "/Volumes/Tavo");
        EXPECT_FALSE(std::ifstream("/etc/passwd").is_open());
        EXPECT_FALSE(std::ofstream(folder_ / "outside").is_open());
        EXPECT_TRUE(std::ofstream(volume_ + "/inside").is_open());
        EXPECT_EQ(::socket(AF_INET, SOCK_STREAM, 0), -1);
        EXPECT_NE(::execl("/bin/false", "false", nullptr), 0); // fails the test if it starts
    }).get();
    test::withoutSystemCall(SYS_landlock_create_ruleset, ENOSYS, // as on older kernels
                            [this] { EXPECT_EQ(mount(), "/Volumes/Tavo"); });
}

TEST_F(Mount, LeavesNothingOfAVolumeThatIsTooLarge) {
    writeFile(in_ + "/folder/file", tools::noise(5120));
    fs::create_symlink("folder", in_ + "/link");
    makeImage(Made::udifZlib);
    settings_.limits.entries = 3; // with the top folder there is one more
    expectRefused("the volume holds too many files");
    settings_.limits = {.bytes = 5120};
    expectRefused("the volume is too large");
    settings_.limits = {};
    const std::pair<unsigned, std::string> calls[] = {{SYS_pwrite64, "the volume cannot be unpacked"},
                                                      {SYS_mkdirat, "cannot make folder of the volume"},
                                                      {SYS_fchmod, "cannot make folder/file of the volume"},
                                                      {SYS_symlinkat, "cannot make link of the volume"}};
    for (const auto& [call, reason] : calls)
        test::withoutSystemCall(
            call, ENOSPC, [this, reason = reason] { expectRefused(reason + ": No space left on device"); });
    constexpr fsblkcnt_t kept = 65536; // for others
    for (const auto& [kind, free] : {std::pair{Made::udifZlib, 6}, {Made::udifAdc, 6}, {Made::hfsPlus, 5}}) {
        makeImage(kind);
        kibibytesOnDisk = kept + free;
        expectRefused("the disk has no room for the volume");
    }
    kibibytesOnDisk = kept + 6;
    EXPECT_EQ(mount(), "/Volumes/Tavo");
    kibibytesOnDisk = UINT32_MAX;
}

TEST_F(Mount, EndsWithoutRoomOnTheDiskAndAloneForThatVolume) {
    const std::string inside = writeFile(volume_ + "/a/file", "x");
    const std::string other = writeFile(folder_ / "root/Volumes/Other/file", "x");
    fs::create_directory_symlink(volume_, folder_ / "root/Volumes/way");
    fs::create_symlink(folder_ / "root/Volumes/Other", volume_ + "/way");
    for (const std::string& place : {"/Volumes"s, "/Volumes/"s, "/Volumes/.."s, "/Volumes/Tavo/a"s,
                                     "/Volumes/way"s, "/Volumes/missing"s, "/Applications/Tavo"s, volume_})
        EXPECT_THROW(detachVolume(place, settings_.root), Exception) << place;
    EXPECT_TRUE(fs::exists(inside));
    test::withoutSystemCall(SYS_mkdir, ENOSPC, [this] { detachVolume("/Volumes/Tavo", settings_.root); });
    EXPECT_FALSE(fs::exists(volume_));
    EXPECT_TRUE(fs::exists(other));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_ / "root"), {}), 1);
}

TEST_F(Mount, NeedsTheProgram7zzRatherThanAScriptThatStartsIt) {
    const std::string script = test::writeProgram(folder_ / "script");
    const std::string program = test::writeProgram(folder_ / "program", "\x7F\x45LF");
    const std::string other = writeFile(folder_ / "cannot be started", "\x7F\x45LF");
    EXPECT_EQ(pathOf7zz({folder_ / "missing", script, other, program}), program);
    EXPECT_THROW(pathOf7zz({folder_ / "missing", script, other}), Exception);
}

TEST_F(Mount, Lets7zzReachNothingButTheImage) {
    const std::string program = standInThat("tries");
    const std::string output = test::shell(folder_.path(), program);
    EXPECT_TRUE(output.starts_with("read: done\nlist: done\nwrite: done\nconnect: done\nstart: done\n"
                                   "signal: done\nthread: done\nmemory: done\n"));
    EXPECT_TRUE(output.ends_with("execute: done\n")) << output;
    const Descriptor image = openForReading(AT_FDCWD, writeFile(image_, "x").c_str());
    const Interruption interruption(std::chrono::minutes(1));
    EXPECT_EQ(SevenZip(program, image.get(), ImageKind::iso, interruption).list(),
              "read: Permission denied\nlist: Permission denied\nwrite: Permission denied\n"
              "connect: Operation not permitted\nstart: Operation not permitted\n"
              "signal: Operation not permitted\nthread: done\nmemory: Cannot allocate memory\nimage: done\n"
              "execute: Operation not permitted\n");
}

TEST_F(Mount, ByTheProgramSaysInOneLineWhyItFailedOrHowToCallIt) {
    const std::string calls = "export HOME=$PWD XDG_DATA_HOME=$PWD/data\n"
                              "for words in 'mount no' 'detach /Volumes/no' '' mount 'mount a b' 'eject a'\n"
                              "do " HDIUTIL_PROGRAM " $words 2>&1; echo $?; done";
    const std::string usage = "usage: hdiutil mount IMAGE | hdiutil detach MOUNTPOINT\n2\n";
    EXPECT_EQ(test::shell(folder_.path(), calls),
              "hdiutil: the image cannot be read: No such file or directory\n1\n"
              "hdiutil: no volume is mounted there\n1\n" +
                  usage + usage + usage + usage);
}

} // namespace join::platform::hdiutil
