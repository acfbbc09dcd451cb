#include "images/HostileImage.h"

#include "SevenZip.h"
#include "images/UdifWriter.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace join::test {

using tools::ChunkKind;

namespace {

std::string typeOf(const std::string& name) {
    if (name.starts_with("iso-"))
        return "iso";
    return name.ends_with("-bare") || name.ends_with("-volume") ? "hfs" : "dmg";
}

} // namespace

TEST(HostileImage, FlippedByteIsNoticedInAChunkOfEveryKind) {
    const TemporaryFolder folder;
    const std::string volume = tools::harmlessVolume();
    for (const ChunkKind kind : {ChunkKind::zlib, ChunkKind::bzip2, ChunkKind::raw}) {
        const std::string image = tools::udifOf(volume, kind);
        EXPECT_TRUE(isWell(writeFile(folder / "good", image), "dmg"));
        // The first chunk holds the catalogue and compresses; noise fills the middle.
        for (const std::size_t place : {std::size_t{20}, image.size() / 2})
            EXPECT_FALSE(isWell(writeFile(folder / "bad", tools::withFlippedByte(image, place)), "dmg"))
                << place;
    }
}

TEST(HostileImage, DamagedOnesAreAllFoundIll) {
    const TemporaryFolder folder;
    for (const auto& [name, bytes] : tools::damagedImages())
        EXPECT_FALSE(isWell(writeFile(folder / name, bytes), typeOf(name))) << name;
}

TEST(HostileImage, MaliciousOnesAreSoundAllTheSame) {
    const TemporaryFolder folder;
    for (const auto& [name, bytes] : tools::maliciousImages("/etc"))
        EXPECT_TRUE(isWell(writeFile(folder / name, bytes), typeOf(name))) << name;
}

TEST(HostileImage, HoldsTheNameThatWasAskedFor) {
    const TemporaryFolder folder;
    const auto list = [&](const std::string& bytes) {
        return sevenZip({"l", "-slt", writeFile(folder / "image", bytes)});
    };
    EXPECT_NE(list(tools::volumeNamed("..")).find("\nPath = ../payload\n"), std::string::npos);
    EXPECT_NE(list(tools::volumeWithFolderNamed("..")).find("\nPath = Hostile/../payload\n"),
              std::string::npos);
    EXPECT_NE(list(tools::isoWithFolderNamed("..")).find("\nPath = ../payload\n"), std::string::npos);
    EXPECT_NE(list(tools::isoNamed("../../escaped")).find("\nVolume: ../../escaped\n"), std::string::npos);
    const std::string behindLink = list(tools::volumeWithFileBehindLink("/etc", "file"));
    EXPECT_LT(behindLink.find("Mode = l"), behindLink.find("Path = Hostile/way/file"));
}

TEST(HostileImage, BombIsSmallAndUnpacksToItsWholeSize) {
    const TemporaryFolder folder;
    const std::string bomb = tools::zeroBomb(200'000'000);
    EXPECT_LT(bomb.size(), 10'000U);
    const std::string path = writeFile(folder / "bomb", bomb);
    EXPECT_TRUE(isWell(path, "dmg"));
    EXPECT_NE(sevenZip({"l", "-slt", path}).find("\nSize = 200000000\n"), std::string::npos);
}

} // namespace join::test
