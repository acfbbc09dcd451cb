#include "platform/linux/helpers/hdiutil/ImageKind.h"

#include "platform/Exception.h"
#include "platform/linux/helpers/hdiutil/ImageFile.h"
#include "platform/linux/helpers/hdiutil/UdifTrailer.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace join::platform::hdiutil {

namespace {

using namespace std::string_literals;

class Bytes : public RandomAccess {
public:
    explicit Bytes(std::string bytes) : bytes_(std::move(bytes)) {}
    std::uint64_t size() const override { return bytes_.size(); }
    std::string read(std::uint64_t offset, std::size_t size) const override {
        return offset < bytes_.size() ? bytes_.substr(offset, size) : std::string();
    }

private:
    std::string bytes_;
};

std::string with(std::string bytes, std::size_t place, const std::string& part) {
    return bytes.replace(place, part.size(), part);
}

std::string zeros(std::size_t size) { return std::string().append(size, '\0'); }

/// An HFS+ volume of that many blocks of 512 bytes in an image of 40 KiB.
std::string hfsPlus(std::size_t place, char blocks) {
    const std::string image = with(zeros(40960), place + 1024, "H+\0\4"s);
    return with(image, place + 1024 + 40, "\0\0\2\0\0\0\0"s + blocks);
}

/// An entry of an Apple partition map: 40 blocks at block 32.
const std::string appleHfs = with(with(zeros(512), 0, "PM"), 8, "\0\0\0\x20\0\0\0\x28"s);

/// Blocks of 512 bytes that begin at sector 12; the inner volume has 40 of them from the 20th on.
const std::string wrapped =
    with(with(with(with(hfsPlus(16384, 40), 1024, "BD"), 1024 + 20, "\0\0\2\0"s), 1024 + 28, "\0\x0C"s),
         1024 + 124, "H+\0\x14\0\x28"s);

std::string trailer() {
    const std::string head = "koly\0\0\0\4\0\0\2\0"s;
    const std::string places = zeros(7) + '\x10' + zeros(7) + '\x20'; // 32 bytes of data at 16
    const std::string checksum = "\0\0\0\2\0\0\0\x20\1\2\3\4"s;
    return with(with(with(zeros(512), 0, head), 24, places), 80, checksum);
}

} // namespace

TEST(ImageKind, IsToldByContent) {
    const std::string disc = with(zeros(40960), 32769, "CD001");
    const std::string hybrid = with(hfsPlus(16384, 40), 32769, "CD001");
    const std::string outside = with(appleHfs, 8, "\xFF\xFF\xFF\xFF"s);
    const std::tuple<std::string, ImageKind, std::uint64_t, std::uint64_t> cases[] = {
        {zeros(64) + trailer(), ImageKind::udif, 0, 576},
        {hfsPlus(0, 80), ImageKind::hfsPlus, 0, 40960},
        {with(zeros(4096), 32, "NXSB"), ImageKind::apfs, 0, 4096},
        {disc, ImageKind::iso, 0, 40960},
        {wrapped, ImageKind::hfsPlus, 16384, 20480},
        {with(hybrid, 512, appleHfs), ImageKind::hfsPlus, 16384, 20480},
        {with(hybrid, 512, outside), ImageKind::iso, 0, 40960}};
    for (std::size_t n = 0; const auto& [image, kind, offset, size] : cases) {
        const ImageFacts facts = tellKind(Bytes(image));
        EXPECT_EQ(facts.kind, kind) << n;
        EXPECT_EQ(facts.place.offset, offset) << n;
        EXPECT_EQ(facts.place.size, size) << n++;
    }
}

TEST(ImageKind, IsRefusedWithTheReason) {
    const std::string noImage = "this is no disk image";
    const std::string other = "the image holds another file system: ";
    const std::string damaged = "the image is damaged: its volume is cut off";
    const std::pair<std::string, std::string> cases[] = {
        {"", noImage},
        {"koly", noImage},
        {zeros(40960), noImage},
        {"<html></html>", noImage},
        {"encrcdsa" + zeros(512), "the image is encrypted"},
        {zeros(512) + "cdsaencr", "the image is encrypted"},
        {with(wrapped, 1024 + 128, "\0\x40"s), damaged},
        {hfsPlus(0, 81), damaged},
        {with(hfsPlus(16384, 41), 512, appleHfs), damaged},
        {with(zeros(512), 3, "EXFAT   "), other + "exFAT"},
        {with(zeros(512), 3, "NTFS    "), other + "NTFS"},
        {with(zeros(512), 82, "FAT32   "), other + "FAT"},
        {with(zeros(2048), 1024, "BD"), other + "HFS"},
        {with(zeros(2048), 1080, "\x53\xEF"), other + "ext"},
        {with(zeros(40960), 32769, "BEA01"), other + "UDF"},
        {with(with(zeros(40960), 16384 + 1024, "BD"), 512, appleHfs), other + "HFS"}};
    for (const auto& [image, reason] : cases) {
        try {
            tellKind(Bytes(image));
            ADD_FAILURE() << reason;
        } catch (const Exception& refusal) {
            EXPECT_EQ(refusal.what(), reason);
        }
    }
}

TEST(UdifTrailer, TellsTheChecksumOfTheData) {
    const UdifTrailer parsed = readUdifTrailer(Bytes(zeros(512) + trailer()));
    EXPECT_EQ(parsed.data.offset, 16U);
    EXPECT_EQ(parsed.data.size, 32U);
    EXPECT_EQ(parsed.dataCrc, 0x01020304U);
    EXPECT_FALSE(readUdifTrailer(Bytes(zeros(512) + with(trailer(), 83, "\0"s))).dataCrc);
}

TEST(UdifTrailer, IsRefusedWhenDamaged) {
    using Damage = std::pair<std::size_t, std::string>;
    for (const auto& [place, bytes] :
         {Damage{0, "kolz"}, Damage{7, "\5"}, Damage{11, "\1"}, Damage{83, "\1"}, Damage{87, "\x80"},
          Damage{38, "\2"}, Damage{24, zeros(8) + std::string(8, '\xFF')},
          Damage{24, std::string(16, '\xFF')}}) {
        const Bytes image(zeros(512) + with(trailer(), place, bytes));
        EXPECT_TRUE(isUdif(image)) << place;
        EXPECT_THROW(readUdifTrailer(image), Exception) << place;
    }
}

TEST(ImageFile, IsRefusedWhenItShrinksWhileItIsRead) {
    const test::TemporaryFolder folder;
    const ImageFile image(test::writeFile(folder / "image", zeros(100)));
    EXPECT_EQ(image.read(90, 20).size(), 10U);
    std::filesystem::resize_file(folder / "image", 50);
    EXPECT_THROW(image.read(40, 20), Exception);
}

} // namespace join::platform::hdiutil
