#include "platform/linux/helpers/hdiutil/Mount.h"

#include "images/DiskImage.h"
#include "images/HostileImage.h"
#include "images/MacVolume.h"
#include "images/UdifWriter.h"
#include "platform/Exception.h"
#include "platform/linux/helpers/hdiutil/SevenZip.h"
#include "platform/linux/helpers/hdiutil/VolumeWriter.h"
#include "support/Child.h"
#include "support/RefusedSystemCall.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <future>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace join::platform::hdiutil {

namespace fs = std::filesystem;
using namespace std::string_literals;
using test::contentsOf;
using test::writeFile;
using Made = tools::ImageKind;

namespace {

/// Type, permissions, time and content of everything below a folder, except the times of folders.
std::map<std::string, std::string> treeOf(const std::string& top) {
    std::map<std::string, std::string> tree;
    for (const auto& entry : fs::recursive_directory_iterator(top)) {
        struct stat found {};
        ::lstat(entry.path().c_str(), &found);
        std::string& text = tree[fs::relative(entry.path().parent_path(), top) / entry.path().filename()];
        text = std::to_string(S_ISLNK(found.st_mode) ? mode_t{S_IFLNK} : found.st_mode) + " ";
        if (entry.is_symlink())
            text += fs::read_symlink(entry.path());
        else if (entry.is_regular_file())
            text += std::to_string(found.st_mtime) + " " +
                    std::to_string(std::hash<std::string>()(contentsOf(entry.path())));
    }
    return tree;
}

} // namespace

class Mount : public testing::Test {
protected:
    /// The content of the volume "Tavo": a bundle with every sort of link, text, noise, and runs of zeros and
    /// of another byte over several chunks.
    void makeContent() const {
        const std::string app = in_ + "/Tavo.app/Contents/";
        writeFile(app + "MacOS/Tavo", "#!/bin/sh\n");
        fs::permissions(app + "MacOS/Tavo", fs::perms(0750));
        writeFile(app + "empty", "");
        writeFile(app + "runs", std::string(600000, '\0') + std::string(300000, 't'));
        std::mt19937 random; // NOLINT(bugprone-random-generator-seed): the same image each time
        std::string noise(10000, ' ');
        std::generate(noise.begin(), noise.end(), [&] { return static_cast<char>(random()); });
        writeFile(in_ + "/noise * [1]", noise);
        fs::permissions(in_ + "/noise * [1]", fs::perms(0444));
        fs::create_directory(in_ + "/none");
        fs::create_symlink("Contents/MacOS", in_ + "/Tavo.app/relative");
        fs::create_symlink("../../Tavo.app/Contents/empty", app + "up");
        fs::create_symlink("/Applications", in_ + "/Applications");
        fs::create_symlink("/missing/../../..", in_ + "/dangling");
    }

    void makeImage(Made kind) const {
        makeContent();
        tools::makeDiskImage(in_, "Tavo", kind, image_);
    }

    /// Returns a stand-in of 7zz. It knows an image of Apple's format.
    std::string standInThat(const std::string& name) const {
        fs::create_symlink(SEVEN_ZIP_STAND_IN, folder_ / name);
        return folder_ / name;
    }

    /// On a thread of its own, which is confined from then on.
    std::string mount() const {
        return std::async(std::launch::async, [this] { return mountImage(image_, settings_); }).get();
    }

    bool isEmpty() const {
        const auto everything = fs::exists(folder_ / "root")
                                    ? fs::recursive_directory_iterator(folder_ / "root")
                                    : fs::recursive_directory_iterator();
        return std::all_of(begin(everything), end(everything),
                           [](const auto& entry) { return entry.path().stem() == "Volumes"; });
    }

    void expectShown(const std::string& image, const std::string& what) const {
        writeFile(image_, image);
        EXPECT_EQ(mount(), "/Volumes/Tavo") << what;
        EXPECT_EQ(treeOf(volume_), treeOf(in_)) << what;
    }

    void expectRefused(const std::string& what) const {
        EXPECT_THROW(mount(), Exception) << what;
        EXPECT_TRUE(isEmpty()) << what;
    }

    test::TemporaryFolder folder_;
    std::string in_ = folder_ / "in";
    std::string image_ = folder_ / "image";
    std::string volume_ = folder_ / "root/Volumes/Tavo";
    MountSettings settings_{.root = SystemRoot(folder_ / "root"), .sevenZip = pathOf7zz()};
};

TEST_F(Mount, ShowsVolumesOfEveryKindAsTheyWereMade) {
    makeContent();
    for (const auto& [name, kind] : tools::imageKinds()) {
        tools::makeDiskImage(in_, "Tavo", kind, image_);
        expectShown(contentsOf(image_), std::string(name));
    }
}

TEST_F(Mount, ShowsImagesAsMacsMakeThem) {
    makeContent();
    for (const char* name :
         {"Icon\r", ".DS_Store", ".Trashes/501/old", ".fseventsd/fseventsd-uuid", ".background/picture.png",
          ".VolumeIcon.icns", "bell\a and tab\t", "[HFS+]", "My HFS+ Private Data", "folder/.journal"})
        writeFile(in_ + "/" + name, name);
    const std::string volume = tools::macVolume({in_, "Tavo"});
    for (const auto map :
         {tools::PartitionMap::none, tools::PartitionMap::apple, tools::PartitionMap::guid}) {
        const std::vector<tools::DiskPart> disk = tools::partitionedDisk(volume, map);
        std::string bare;
        for (const tools::DiskPart& part : disk)
            bare += part.bytes;
        const std::string what = "map " + std::to_string(static_cast<int>(map));
        expectShown(bare, what + ", bare");
        expectShown(tools::udifOf(disk, {}), what);
        expectShown(tools::udifOf(disk, {.hasLicence = true, .isSigned = true}), what + ", signed");
        const std::string writable = tools::udifOf(disk, {.isListed = false});
        expectShown(writable, what + ", writable");
        writeFile(image_, tools::withFlippedByte(writable, writable.size() / 2));
        fs::remove_all(volume_);
        expectRefused(what);
    }
}

TEST_F(Mount, ShowsANameWithLineFeedsAsOneName) {
    const std::string name = "a\n\nPath = b\nFolder = -\nSize = 0\n";
    writeFile(in_ + "/" + name, "x");
    tools::makeDiskImage(in_, "Tavo", Made::hfsPlus, image_);
    mount();
    EXPECT_EQ(std::distance(fs::recursive_directory_iterator(volume_), {}), 1);
}

TEST_F(Mount, TellsWhyAnImageIsRefused) {
    const std::string sector(512, '\0');
    const std::string fat =
        "\xEB\x58\x90mkfs.fat" + std::string(43, '\0') + "FAT16   " + std::string(450, '\0');
    writeFile(in_ + "/file", "x");
    const std::string hardLinks = tools::macVolumeWithHardLinks({in_, "Tavo"});
    const std::string volume = tools::macVolume({in_, "Tavo"});
    const std::string name = "disk image (Apple_HFS : 1)";
    const std::pair<std::string, std::string> cases[] = {
        {tools::udifOf({{"disk image (DOS_FAT_16 : 1)", fat}}, {}),
         "the image holds another file system: FAT"},
        {hardLinks, "the volume holds hard links"},
        {tools::udifOf(hardLinks, tools::ChunkKind::zlib), "the volume holds hard links"},
        {tools::udifOf({{name, volume}, {name, volume}}, {}), "the image holds more than one volume"},
        {tools::udifOf({{" (Apple_Free : 0)", sector}}, {}), "the image holds no volume"}};
    for (const auto& [image, reason] : cases) {
        writeFile(image_, image);
        try {
            ADD_FAILURE() << mount() << " for " << reason;
        } catch (const Exception& refusal) {
            EXPECT_EQ(refusal.what(), reason);
        }
    }
    EXPECT_TRUE(isEmpty());
}

TEST_F(Mount, TakesTheRicherPartOfADiscThatHoldsItsFilesTwice) {
    makeContent();
    for (const char* option : {"-J", "-hfsplus", "--norock"}) {
        const bool isPoor = option == std::string("--norock");
        test::Child maker({.command = {"xorrisofs", "-quiet", isPoor ? "-J" : "-r", "-V", "Tavo", option,
                                       "-o", image_, in_}});
        ASSERT_EQ(maker.wait(), 0);
        // Without anything better Joliet's name of the volume counts, which can be anything.
        const auto padded = [](const std::string& name) { return name + std::string(28, ' '); };
        const std::string made = contentsOf(image_);
        const std::string disc = isPoor ? tools::replaced(made, padded("Tavo"), padded("TAVO")) : made;
        for (const std::string& image : {disc, tools::udifOf({{"whole disk (Apple_ISO : 0)", disc}}, {})}) {
            writeFile(image_, image);
            EXPECT_EQ(mount(), "/Volumes/Tavo");
            const std::string noise = isPoor ? "/noise _ [1]" : "/noise * [1]"; // Joliet has no "*"
            EXPECT_EQ(contentsOf(volume_ + noise), contentsOf(in_ + "/noise * [1]"));
            if (isPoor)
                continue;
            EXPECT_EQ(fs::read_symlink(volume_ + "/Tavo.app/Contents/up"), "../../Tavo.app/Contents/empty");
            EXPECT_EQ(fs::status(volume_ + "/Tavo.app/Contents/MacOS/Tavo").permissions(), fs::perms(0555));
        }
    }
}

TEST_F(Mount, TakesThePlaceOfWhateverHadTheName) {
    makeImage(Made::udifZlib);
    const std::string outside = writeFile(folder_ / "outside/file", "x");
    writeFile(volume_ + "/Tavo.app/Contents/old", "x");
    mount();
    EXPECT_EQ(treeOf(volume_), treeOf(in_));

    fs::remove_all(volume_);
    fs::create_directory_symlink(folder_ / "outside", volume_);
    mount();
    EXPECT_FALSE(fs::is_symlink(volume_));
    EXPECT_EQ(treeOf(volume_), treeOf(in_));
    EXPECT_TRUE(fs::exists(outside));

    // Also on a file system that only knows plain renames.
    writeFile(volume_ + "/old", "x");
    test::withoutSystemCall(SYS_renameat2, EINVAL, [this] { mount(); });
    EXPECT_EQ(treeOf(volume_), treeOf(in_));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_ / "root"), {}), 2); // with the mark of the boot
}

TEST_F(Mount, RemovesWhatKilledRunsLeft) {
    makeImage(Made::udifZlib);
    test::Child dead({.command = {"true"}});
    const std::string left = folder_ / ("root/.hdiutil." + std::to_string(dead.process()) + ".1.partial");
    dead.wait();
    writeFile(left + "/volume/file", "x");
    mount();
    EXPECT_FALSE(fs::exists(left));
}

TEST_F(Mount, RefusesDamagedImagesAndWhatIsNoFile) {
    for (const tools::HostileImage& hostile : tools::damagedImages()) {
        writeFile(image_, hostile.bytes);
        expectRefused(hostile.name);
    }
    fs::create_directory(folder_ / "folder");
    ::mkfifo((folder_ / "pipe").c_str(), 0600);
    for (const char* name : {"folder", "pipe", "missing"}) {
        image_ = folder_ / name;
        expectRefused(name);
    }
}

TEST_F(Mount, MakesNothingOutsideTheVolumeThatAHostileImageNames) {
    fs::create_directories(folder_ / "target");
    for (const tools::HostileImage& hostile : tools::maliciousImages(folder_ / "target")) {
        writeFile(image_, hostile.bytes);
        try {
            fs::remove_all(folder_ / ("root" + mount()));
        } catch (const Exception&) {
        }
        EXPECT_TRUE(isEmpty()) << hostile.name;
        EXPECT_TRUE(fs::is_empty(folder_ / "target")) << hostile.name;
        EXPECT_EQ(std::distance(fs::directory_iterator(folder_.path()), {}), 3) << hostile.name;
    }
}

TEST_F(Mount, LeavesNothingWhen7zzFailsOrHangs) {
    makeImage(Made::udifAdc);
    settings_.sevenZip = standInThat("succeeds");
    EXPECT_EQ(mount(), "/Volumes/Tavo");
    EXPECT_EQ(contentsOf(volume_ + "/file"), "text");
    fs::remove_all(volume_);
    for (const std::string command : {"l", "t", "x"}) {
        for (const char* end : {"-fails", "-dies", "-hangs"}) {
            settings_.sevenZip = standInThat(command + end);
            settings_.allowed = std::chrono::milliseconds(end == std::string("-hangs") ? 500 : 30'000);
            expectRefused(command + end);
            EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a process of " << command << end;
        }
    }
    for (const char* end : {"x-nothing", "x-more", "missing"}) {
        settings_.sevenZip = standInThat(end);
        if (end == std::string("missing"))
            fs::remove(settings_.sevenZip);
        expectRefused(end);
    }
}

TEST_F(Mount, LeavesNothingWhenItIsToldToEnd) {
    makeImage(Made::udifAdc);
    settings_.sevenZip = standInThat("x-hangs");
    sigset_t ends{};
    sigset_t before{};
    ::sigemptyset(&ends);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        ::sigaddset(&ends, signal);
        ::pthread_sigmask(SIG_BLOCK, &ends, &before);
        auto mounting = std::async(std::launch::async, [this] { return mountImage(image_, settings_); });
        EXPECT_TRUE(test::eventually([this] { return !isEmpty(); }));
        ::kill(::getpid(), signal);
        EXPECT_THROW(mounting.get(), Exception);
        EXPECT_TRUE(isEmpty()) << signal;
        ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }
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
    makeImage(Made::udifZlib);
    settings_.limits.entries = 5;
    expectRefused("entries");
    settings_.limits = {.bytes = 500000};
    expectRefused("bytes");
    settings_.limits = {};
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const auto handler = ::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{100000, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
    expectRefused("full");
    ::setrlimit(RLIMIT_FSIZE, &before);
    ::signal(SIGXFSZ, handler);
}

class Detach : public Mount {
protected:
    std::string file_ = writeFile(volume_ + "/a/file", "x");
};

TEST_F(Detach, TakesOneVolumeAwayAndNeedsNoRoom) {
    const std::string other = writeFile(folder_ / "root/Volumes/Other/file", "x");
    fs::create_symlink(folder_ / "root/Volumes/Other", volume_ + "/way");
    test::withoutSystemCall(SYS_mkdir, ENOSPC, [this] { detachVolume("/Volumes/Tavo", settings_.root); });
    EXPECT_FALSE(fs::exists(volume_));
    EXPECT_TRUE(fs::exists(other));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_ / "root"), {}), 1);
}

TEST_F(Detach, RefusesEverythingElse) {
    fs::create_directory_symlink(volume_, folder_ / "root/Volumes/way");
    writeFile(folder_ / "root/Volumes/plain", "x");
    for (const std::string& place :
         {""s, "/"s, "/Volumes"s, "/Volumes/"s, "/Volumes/."s, "/Volumes/.."s, "/Volumes/Tavo/a"s,
          "/Volumes/Tavo/"s, "/Volumes//Tavo"s, "/Volumes/../Volumes/Tavo"s, "Tavo"s, "/Volumes/way"s,
          "/Volumes/plain"s, "/Volumes/missing"s, "/Applications/Tavo"s, volume_})
        EXPECT_THROW(detachVolume(place, settings_.root), Exception) << place;
    EXPECT_TRUE(fs::exists(file_));
}

TEST(VolumeWriter, TakesALinkThatEndsWithNulAsApfsHasIt) {
    const test::TemporaryFolder folder;
    std::string bytes("../x y\0", 7);
    const VolumePlan plan{
        .name = {},
        .entries = {
            {.kind = EntryKind::link, .path = "way", .size = bytes.size(), .modified = {}, .linkText = {}}}};
    writeVolume(plan, folder.path(), [&](char* buffer, std::size_t size) {
        const std::size_t count = bytes.copy(buffer, std::min<std::size_t>(size, 3));
        bytes.erase(0, count);
        return count;
    });
    EXPECT_EQ(fs::read_symlink(folder / "way"), "../x y");
}

} // namespace join::platform::hdiutil
