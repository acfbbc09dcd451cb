#include "images/HostileImage.h"
#include "images/UdifWriter.h"
#include "platform/Exception.h"
#include "platform/linux/helpers/hdiutil/ImageKind.h"
#include "platform/linux/helpers/hdiutil/UdifInflate.h"
#include "support/RefusedSystemCall.h"
#include "support/TemporaryFolder.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sstream>
#include <zlib.h>

namespace join::platform::hdiutil {

namespace {

using namespace std::string_literals;
using Kind = tools::ChunkKind;

/// The kind and the place of the volume, and of the chunks in an image of Apple's format; or why it is refused.
std::string told(const std::string& bytes) {
    const test::TemporaryFolder folder;
    const ImageFile image(test::writeFile(folder / "image", bytes));
    try {
        const auto [kind, place] = tellKind(image);
        std::ostringstream out;
        out << typeName(kind) << ' ' << place.offset << '+' << place.size;
        if (kind == ImageKind::udif) {
            const auto [data, list, isRaw, dataCrc, masterCrc] = readUdifTrailer(image);
            out << ": " << data.offset << '+' << data.size << ' ' << dataCrc.value_or(0);
        }
        return out.str();
    } catch (const Exception& refusal) {
        return refusal.what();
    }
}

std::string with(std::string bytes, std::size_t place, const std::string& part) {
    return bytes.replace(place, part.size(), part);
}

std::string zeros(std::size_t size) { return std::string().append(size, '\0'); }

/// An HFS+ volume of that many blocks of 512 bytes in an image of 40 KiB.
std::string hfsPlus(std::size_t place, char blocks) {
    const std::string image = with(zeros(40960), place + 1024, "H+\0\4"s);
    return with(image, place + 1024 + 40, "\0\0\2\0\0\0\0"s + blocks);
}

/// Its chunks are compressed, of zeros, compressed, plain, plain and of zeros.
const std::string volume = std::string(262144, 't') + std::string(262144, '\0') + std::string(262144, 'u') +
                           tools::noise(524288) + std::string(1024, '\0');

/// An image in two parts, of which the second is the volume. Its chunks come first.
struct Image {
    std::string data;
    tools::UdifContents contents;
    tools::UdifPartition& free = contents.partitions[0];
    tools::UdifPartition& disk = contents.partitions[1];
    std::vector<tools::UdifChunk>& chunks = disk.chunks;
};

/// Returns the second partition, or why there is none.
std::string unpacked(const Image& made, const Interruption& interruption) {
    const test::TemporaryFolder folder;
    const ImageFile image(test::writeFile(folder / "image", made.data + tools::udifTail(made.contents)));
    try {
        const UdifTrailer trailer = readUdifTrailer(image);
        const auto table =
            parseUdifTable(image.read(trailer.propertyList.offset, trailer.propertyList.size), trailer);
        if (!table)
            return "left to 7zz";
        const Extent disk{table->partitions.at(0).size, table->partitions.at(1).size};
        const ImageFile part = inflateUdif(image, trailer, *table, disk, folder.path(), interruption);
        return part.read(0, part.size());
    } catch (const Exception& refusal) {
        return refusal.what();
    }
}

} // namespace

TEST(ImageKind, IsToldByTheContentsOrRefusedWithTheReason) {
    // An entry of an Apple partition map: 40 blocks at block 32.
    const std::string appleHfs = with(with(zeros(512), 0, "PM"), 8, "\0\0\0\x20\0\0\0\x28"s);
    const std::string outside = with(appleHfs, 8, "\xFF\xFF\xFF\xFF"s);
    const std::string disc = with(zeros(40960), 32769, "CD001");
    const std::string hybrid = with(hfsPlus(16384, 40), 32769, "CD001");
    // Blocks of 512 bytes that begin at sector 12; the inner volume has 40 of them from the 20th on.
    std::string wrapped = with(with(hfsPlus(16384, 40), 1024, "BD"), 1024 + 20, "\0\0\2\0"s);
    wrapped = with(with(wrapped, 1024 + 28, "\0\x0C"s), 1024 + 124, "H+\0\x14\0\x28"s);
    // The trailer of Apple's format with 32 bytes of data at 16.
    std::string udif = with(zeros(576), 64, "koly\0\0\0\4\0\0\2\0"s);
    udif = with(with(udif, 64 + 31, "\x10\0\0\0\0\0\0\0\x20"s), 64 + 80, "\0\0\0\2\0\0\0\x20\1\2\3\4"s);
    // A GUID table at block 34, and an entry of it: 40 blocks from block 32 to 71.
    const std::string guidTable =
        with(with(hfsPlus(16384, 40), 512, "EFI PART"), 512 + 72, "\x22" + zeros(11) + "\x80");
    const std::string guidEntry = "\x20\0\0\0\0\0\0\0\x47"s;
    const std::string none = "this is no disk image";
    const std::string other = "the image holds another file system: ";
    const std::string cutOff = "the image is damaged: its volume is cut off";
    const std::pair<std::string, std::string> cases[] = {
        {udif, "Dmg 0+576: 16+32 16909060"},
        {with(udif, 64 + 83, "\0"s), "Dmg 0+576: 16+32 0"},
        {hfsPlus(0, 80), "HFS 0+40960"},
        {with(hfsPlus(0, 80), 1024, "HX\0\5"s), "HFS 0+40960"},
        {hfsPlus(0, 81), cutOff},
        {with(zeros(4096), 32, "NXSB"), "APFS 0+4096"},
        {disc, "Iso 0+40960"},
        {wrapped, "HFS 16384+20480"},
        {with(wrapped, 1024 + 128, "\0\x40"s), cutOff},
        {with(hybrid, 512, appleHfs), "HFS 16384+20480"},
        {with(hybrid, 512, outside), "Iso 0+40960"},
        {with(with(hybrid, 0, "ER\x08\0"s), 2048, with(appleHfs, 8, "\0\0\0\x08\0\0\0\x0A"s)),
         "HFS 16384+20480"},
        {with(hfsPlus(16384, 41), 512, appleHfs), cutOff},
        {with(guidTable, 34 * 512 + 127 * 128 + 32, guidEntry), "HFS 16384+20480"}, // the last one read
        {with(guidTable, 34 * 512 + 128 * 128 + 32, guidEntry), none},
        {"koly", none},
        {zeros(40960), none},
        {"encrcdsa" + zeros(512), "the image is encrypted"},
        {zeros(512) + "cdsaencr", "the image is encrypted"},
        {with(zeros(512), 3, "EXFAT   "), other + "exFAT"},
        {with(zeros(512), 3, "NTFS    "), other + "NTFS"},
        {with(zeros(512), 82, "FAT32   "), other + "FAT"},
        {with(zeros(2048), 1024, "BD"), other + "HFS"},
        {with(zeros(2048), 1080, "\x53\xEF"), other + "ext"},
        {with(zeros(40960), 32769, "BEA01"), other + "UDF"},
        {with(with(zeros(40960), 16384 + 1024, "BD"), 512, appleHfs), other + "HFS"}};
    for (std::size_t n = 0; const auto& [image, result] : cases)
        EXPECT_EQ(told(image), result) << n++;
    using Damage = std::pair<std::size_t, std::string>;
    for (const auto& [place, bytes] :
         {Damage{0, "kolz"}, Damage{7, "\5"}, Damage{11, "\1"}, Damage{83, "\1"}, Damage{87, "\x80"},
          Damage{38, "\2"}, Damage{32, std::string(8, '\xFF')}, Damage{216, std::string(8, '\xFF')},
          Damage{24, std::string(16, '\xFF')}})
        EXPECT_EQ(told(with(udif, 64 + place, bytes)), "the image is damaged: its trailer is wrong") << place;
}

TEST(ImageFile, IsRefusedWhenItShrinksWhileItIsRead) {
    const test::TemporaryFolder folder;
    const ImageFile image(test::writeFile(folder / "image", zeros(100)));
    EXPECT_EQ(image.read(90, 20).size(), 10U);
    std::filesystem::resize_file(folder / "image", 50);
    EXPECT_THROW(image.read(40, 20), Exception);
}

TEST(UdifInflate, UnpacksOnePartitionOfASoundImageUntilItIsToldToEnd) {
    const std::string table = "the image is damaged: its table is wrong";
    const std::string checksum = "the image is damaged: its checksums are wrong";
    const std::string left = "left to 7zz";
    const std::pair<void (*)(Image&), std::string> cases[] = {
        {[](Image&) {}, volume},
        {[](Image& image) { image.chunks.insert(image.chunks.begin(), {Kind(0x7FFFFFFE)}); }, volume},
        {[](Image& image) { // one large plain chunk
             image.free.chunks = {{.sectors = image.free.sectors, .size = image.free.sectors * 512}};
         },
         volume},
        {[](Image& image) { // zeros with a checksum
             image.chunks[1].kind = image.chunks[5].kind = Kind(0);
             const auto* bytes = reinterpret_cast<const Bytef*>(volume.data());
             image.disk.crc = static_cast<std::uint32_t>(::crc32_z(0, bytes, volume.size()));
         },
         volume},
        {[](Image& image) { image.chunks[0].kind = Kind(3); }, left},
        {[](Image& image) {
             image.chunks = {{Kind::zlib, 0, image.disk.sectors = 32769}};
         },
         left},
        {[](Image& image) { image.chunks[1].firstSector++; }, table},
        {[](Image& image) { image.chunks[0].sectors = UINT64_MAX / 512; }, table},
        {[](Image& image) {
             image.chunks[5].kind = Kind(0);
             image.disk.sectors = std::uint64_t{1} << 31;
             image.chunks[5].sectors = image.disk.sectors - image.chunks[5].firstSector;
         },
         table},
        {[](Image& image) { image.disk.sectors++; }, table},
        {[](Image& image) { image.chunks[0].offset = image.contents.dataSize; }, table},
        {[](Image& image) { image.chunks[0].offset = UINT64_MAX - 16; }, table},
        {[](Image& image) { image.chunks[0].size = image.contents.dataSize; }, table},
        {[](Image& image) { image.chunks[2].offset = image.chunks[0].offset; }, table},
        {[](Image& image) { image.chunks[3].size--; }, table},
        {[](Image& image) { image.free.crc ^= 1; }, checksum},
        {[](Image& image) { image.contents.dataCrc ^= 1; }, checksum},
        {[](Image& image) { image.data[image.chunks[4].offset] ^= 1; }, checksum},
        {[](Image& image) { image.contents.dataSize = (image.data += "in no chunk").size(); }, checksum},
        {[](Image& image) { image.data[image.chunks[2].offset + 9] ^= 1; },
         "the image is damaged: it cannot be inflated"},
        {[](Image&) { test::refuseSystemCall(SYS_clone3, EAGAIN); }, "no thread can be started"},
        {[](Image&) { ::raise(SIGTERM); }, "it was told to end"},
        {[](Image&) { ::raise(SIGINT); }, "it was told to end"},
        {[](Image&) { ::raise(SIGHUP); }, "it was told to end"}};
    for (const auto kind : {Kind::zlib, Kind::bzip2}) {
        std::ostringstream out;
        tools::UdifWriter writer(out, {.kind = kind});
        writer.beginPartition("free (Apple_Free : 1)");
        writer.append(tools::noise(1572864));
        writer.beginPartition("disk (Apple_HFS : 2)");
        writer.append(volume);
        writer.finish();
        for (std::size_t n = 0; const auto& item : cases) {
            std::async(std::launch::async, [&] {
                const Interruption interruption(std::chrono::minutes(10));
                Image image{out.str().substr(0, writer.contents().dataSize), writer.contents()};
                item.first(image);
                EXPECT_TRUE(unpacked(image, interruption) == item.second) << n;
            }).get();
            ++n;
        }
    }
}

} // namespace join::platform::hdiutil
