#include "platform/linux/hdiutil/ImageKind.h"

#include "platform/Exception.h"
#include "platform/linux/hdiutil/Crc32.h"
#include "platform/linux/hdiutil/ImageFile.h"
#include "platform/linux/hdiutil/UdifTrailer.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
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

std::string zeros(std::size_t size) {
    std::string bytes;
    bytes.resize(size);
    return bytes;
}

/// An HFS+ volume of that many blocks of 512 bytes in an image of 40 KiB.
std::string hfsPlus(std::size_t place, char blocks) {
    const std::string image = with(zeros(40960), place + 1024, "H+\0\4"s);
    return with(image, place + 1024 + 40, "\0\0\2\0\0\0\0"s + blocks);
}

std::string trailer() {
    const std::string head = "koly\0\0\0\4\0\0\2\0"s;
    const std::string places = zeros(7) + '\x10' + zeros(7) + '\x20'; // 32 bytes of data at 16
    const std::string checksum = "\0\0\0\2\0\0\0\x20\1\2\3\4"s;
    return with(with(with(zeros(512), 0, head), 24, places), 80, checksum);
}

} // namespace

TEST(ImageKind, IsToldByContent) {
    EXPECT_EQ(tellKind(Bytes(zeros(64) + trailer())).kind, ImageKind::udif);
    EXPECT_EQ(tellKind(Bytes(hfsPlus(0, 80))).kind, ImageKind::hfsPlus);
    EXPECT_EQ(tellKind(Bytes(with(zeros(4096), 32, "NXSB"))).kind, ImageKind::apfs);
    EXPECT_EQ(tellKind(Bytes(with(zeros(40960), 32769, "CD001"))).kind, ImageKind::iso);
    for (const std::string& other : {""s, "koly"s, zeros(511), zeros(40960), "<html></html>"s})
        EXPECT_THROW(tellKind(Bytes(other)), Exception);
    EXPECT_THROW(tellKind(Bytes(hfsPlus(0, 81))), Exception) << "cut off";
}

TEST(ImageKind, OfAHybridIsThatOfItsRicherPart) {
    const std::string iso = with(hfsPlus(16384, 40), 32769, "CD001");
    const std::string entry = with(with(zeros(512), 0, "PM"), 48, "Apple_HFS\0"s);
    const ImageFacts facts = tellKind(Bytes(with(iso, 512, with(entry, 8, "\0\0\0\x20"s))));
    EXPECT_EQ(facts.kind, ImageKind::hfsPlus);
    EXPECT_EQ(facts.volumeOffset, 16384U);

    const std::string outside = with(entry, 8, "\xFF\xFF\xFF\xFF"s);
    EXPECT_EQ(tellKind(Bytes(with(iso, 512, outside))).kind, ImageKind::iso);
}

TEST(UdifTrailer, TellsTheChecksumOfTheData) {
    const UdifTrailer parsed = parseUdifTrailer(trailer(), 1024);
    EXPECT_EQ(parsed.dataOffset, 16U);
    EXPECT_EQ(parsed.dataLength, 32U);
    EXPECT_EQ(parsed.dataCrc, 0x01020304U);
    EXPECT_FALSE(parseUdifTrailer(with(trailer(), 83, "\0"s), 1024).dataCrc);
}

TEST(UdifTrailer, IsRefusedWhenDamaged) {
    const std::vector<std::string> trailers{with(trailer(), 0, "kolz"),
                                            with(trailer(), 7, "\5"),
                                            with(trailer(), 11, "\1"),
                                            with(trailer(), 83, "\1"),
                                            with(trailer(), 87, "\x80"),
                                            with(trailer(), 38, "\2"),
                                            with(trailer(), 24, zeros(8) + std::string(8, '\xFF')),
                                            with(trailer(), 24, std::string(16, '\xFF'))};
    for (std::size_t n = 0; n < trailers.size(); ++n) {
        EXPECT_TRUE(isUdifTrailer(trailers[n])) << n;
        EXPECT_THROW(parseUdifTrailer(trailers[n], 1024), Exception) << n;
    }
}

TEST(ImageFile, IsRefusedWhenItShrinksWhileItIsRead) {
    const test::TemporaryFolder folder;
    const ImageFile image(test::writeFile(folder / "image", zeros(100)));
    EXPECT_EQ(image.read(90, 20).size(), 10U);
    std::filesystem::resize_file(folder / "image", 50);
    EXPECT_THROW(image.read(40, 20), Exception);
}

TEST(Crc32, IsThatOfTheStandard) {
    EXPECT_EQ(crc32(0, "123456789"), 0xCBF43926U);
    EXPECT_EQ(crc32(crc32(0, "1234"), "56789"), 0xCBF43926U);
    EXPECT_EQ(crc32(0, std::string(32, '\xFF')), 0xFF6CAB0BU);
}

} // namespace join::platform::hdiutil
