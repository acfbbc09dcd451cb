#include "images/DiskImage.h"

#include "SevenZip.h"
#include "images/Volume.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <gtest/gtest.h>
#include <map>
#include <sstream>

namespace join::test {

namespace fs = std::filesystem;
using tools::ImageKind;
using tools::makeDiskImage;

namespace {

struct Kind {
    std::string name;
    ImageKind kind;
    std::string type;
    std::string top; ///< before each path in the listing
};

const std::vector<Kind>& kinds() {
    static const std::vector<Kind> all{{"UdifZlib", ImageKind::udifZlib, "dmg", "My Volume/"},
                                       {"UdifBzip2", ImageKind::udifBzip2, "dmg", "My Volume/"},
                                       {"UdifPlain", ImageKind::udifPlain, "dmg", "My Volume/"},
                                       {"HfsPlus", ImageKind::hfsPlus, "hfs", "My Volume/"},
                                       {"Iso", ImageKind::iso, "iso", ""}};
    return all;
}

/// What `7zz l -slt` says of each path.
std::map<std::string, std::map<std::string, std::string>> listing(const std::string& image) {
    std::istringstream lines(sevenZip({"l", "-slt", image}));
    std::map<std::string, std::map<std::string, std::string>> entries;
    std::string path;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t equals = line.find(" = ");
        if (equals == std::string::npos)
            continue;
        if (line.starts_with("Path = "))
            path = line.substr(equals + 3);
        entries[path][line.substr(0, equals)] = line.substr(equals + 3);
    }
    return entries;
}

/// A program, texts that compress or do not, zeros over several chunks, links of every kind, an old file.
void fill(const TemporaryFolder& folder) {
    const std::string tool = writeFile(folder / "in/My App.app/Contents/MacOS/tool", "#!/bin/sh\n");
    fs::permissions(tool, fs::perms(0750));
    writeFile(folder / "in/text", std::string(700'000, 't'));
    writeFile(folder / "in/zeros", std::string(3'000'000, '\0'));
    std::string noise;
    for (std::uint32_t state = 1; noise.size() < 700'000; state = state * 1664525 + 1013904223)
        noise += static_cast<char>(state >> 24U);
    writeFile(folder / "in/noise", noise);
    writeFile(folder / "in/old", "old");
    fs::last_write_time(folder / "in/old", std::chrono::file_clock::from_sys(std::chrono::sys_seconds(
                                               std::chrono::seconds(1'330'837'567))));
    fs::create_symlink("text", folder / "in/beside");
    fs::create_symlink("../My App.app", folder / "in/up");
    fs::create_symlink("/etc/hostname", folder / "in/absolute");
}

class DiskImageOf : public testing::TestWithParam<Kind> {
protected:
    DiskImageOf() {
        fill(folder);
        makeDiskImage(folder / "in", "My Volume", GetParam().kind, image);
    }

    TemporaryFolder folder;
    std::string image = folder / "image";
};

INSTANTIATE_TEST_SUITE_P(EachKind, DiskImageOf, testing::ValuesIn(kinds()),
                         [](const auto& kind) { return kind.param.name; });

} // namespace

TEST_P(DiskImageOf, AFolderIsFoundWell) {
    EXPECT_TRUE(isWell(image, GetParam().type));
    EXPECT_FALSE(fs::exists(image + ".part"));
}

TEST_P(DiskImageOf, AFolderHoldsItsFilesWithModesAndTimes) {
    auto entries = listing(image);
    const std::string& top = GetParam().top;
    EXPECT_EQ(entries[top + "My App.app/Contents/MacOS/tool"]["Mode"], "-rwxr-x---");
    EXPECT_EQ(entries[top + "My App.app/Contents"]["Mode"].front(), 'd');
    EXPECT_EQ(entries[top + "zeros"]["Size"], "3000000");
    const std::time_t seconds = 1'330'837'567;
    std::array<char, 32> local{};
    std::strftime(local.data(), local.size(), "%F %T", std::localtime(&seconds));
    EXPECT_EQ(entries[top + "old"]["Modified"], local.data());
}

TEST_P(DiskImageOf, AFolderGivesTheFilesBackByteForByte) {
    // The links that lead out are left behind: 7zz refuses to make them and ends with a status that says so.
    sevenZip({"x", "-o" + (folder / "out"), image, "-xr!up", "-xr!absolute"});
    for (const char* name : {"text", "noise", "zeros", "old", "My App.app/Contents/MacOS/tool"})
        EXPECT_TRUE(contentsOf(folder / ("in/" + std::string(name))) ==
                    contentsOf(folder / ("out/" + GetParam().top + name)))
            << name;
}

TEST_P(DiskImageOf, AFolderKeepsEveryLinksOwnText) {
    auto entries = listing(image);
    for (const char* name : {"beside", "up", "absolute"}) {
        const std::string target = fs::read_symlink(folder / ("in/" + std::string(name)));
        auto& entry = entries[GetParam().top + name];
        EXPECT_EQ(entry["Mode"].front(), 'l') << name;
        if (GetParam().kind == ImageKind::iso)
            EXPECT_EQ(entry["Symbolic Link"], target);
        else
            EXPECT_EQ(sevenZip({"e", "-so", image, GetParam().top + name}), target);
    }
}

TEST(DiskImage, IsTheSameForTheSameContentMadeInTheSameSecond) {
    const TemporaryFolder folder;
    fill(folder);
    const auto sameSecond = [&] {
        const std::time_t began = std::time(nullptr);
        makeDiskImage(folder / "in", "Twin", ImageKind::udifZlib, folder / "one");
        makeDiskImage(folder / "in", "Twin", ImageKind::udifZlib, folder / "two");
        return std::time(nullptr) == began;
    };
    while (!sameSecond())
        ;
    EXPECT_TRUE(contentsOf(folder / "one") == contentsOf(folder / "two"));
}

TEST(DiskImage, ThatCannotBeMadeLeavesTheOlderOneAlone) {
    const TemporaryFolder folder;
    const std::string image = writeFile(folder / "image", "older");
    EXPECT_THROW(makeDiskImage(folder / "missing", "Name", ImageKind::udifZlib, image), std::runtime_error);
    EXPECT_THROW(makeDiskImage(folder.path(), "", ImageKind::iso, image), std::runtime_error);
    EXPECT_THROW(makeDiskImage(folder.path(), std::string(33, 'x'), ImageKind::hfsPlus, image),
                 std::runtime_error);
    EXPECT_EQ(contentsOf(image), "older");
    EXPECT_FALSE(fs::exists(image + ".part"));
}

TEST(PartitionMap, WithoutAnHfsPartitionIsRefused) {
    std::string head(32768, '\0');
    EXPECT_THROW(tools::findHfsPartition(head), std::runtime_error);
    EXPECT_THROW(tools::findHfsPartition(""), std::runtime_error);
    head.replace(512, 2, "PM").replace(512 + 48, 10, "Apple_Free");
    EXPECT_THROW(tools::findHfsPartition(head), std::runtime_error);
}

} // namespace join::test
