#include "platform/linux/helpers/hdiutil/UdifInflate.h"

#include "images/UdifWriter.h"
#include "platform/Exception.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <csignal>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <sstream>
#include <zlib.h>

namespace join::platform::hdiutil {

namespace {

using tools::UdifContents;
using Kind = tools::ChunkKind;

std::uint32_t crcOf(const std::string& bytes) {
    return static_cast<std::uint32_t>(
        ::crc32_z(0, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()));
}

std::string noise(std::size_t size) {
    std::mt19937 random; // NOLINT(bugprone-random-generator-seed): the same image each time
    std::string bytes(size, ' ');
    std::ranges::generate(bytes, [&] { return static_cast<char>(random()); });
    return bytes;
}

} // namespace

class UdifInflate : public testing::Test {
protected:
    /// Returns the second partition of the image that these make, or why there is none.
    std::string unpacked(const std::string& data, const UdifContents& contents) const {
        const ImageFile image(test::writeFile(folder_ / "image", data + tools::udifTail(contents)));
        try {
            const UdifTrailer trailer = readUdifTrailer(image);
            const auto table =
                parseUdifTable(image.read(trailer.propertyList.offset, trailer.propertyList.size), trailer);
            if (!table)
                return "left to 7zz";
            const auto& [first, second] = std::tie(table->partitions.at(0), table->partitions.at(1));
            const ImageFile part = inflateUdif(image, trailer, *table, {first.size, second.size},
                                               folder_.path(), Interruption(std::chrono::minutes(10)));
            return part.read(0, part.size());
        } catch (const Exception& refusal) {
            return refusal.what();
        }
    }

    test::TemporaryFolder folder_;
    /// Its chunks are compressed, of zeros, compressed, plain, plain and of zeros.
    std::string volume_ = std::string(262144, 't') + std::string(262144, '\0') + std::string(262144, 'u') +
                          noise(524288) + std::string(1024, '\0');
};

TEST_F(UdifInflate, UnpacksOnePartitionOfASoundImage) {
    const std::string table = "the image is damaged: its table is wrong";
    const std::string checksum = "the image is damaged: its checksums are wrong";
    const std::string left = "left to 7zz";
    using Change = std::function<void(std::vector<tools::UdifChunk>&, UdifContents&, std::string&)>;
    const std::pair<Change, std::string> cases[] = {
        {[](auto&, auto&, auto&) {}, volume_},
        {[](auto&, auto& image, auto&) { // a large plain chunk
             auto& chunks = image.partitions[0].chunks;
             chunks[0].sectors = image.partitions[0].sectors;
             chunks[0].size = chunks[0].sectors * 512;
             chunks.resize(1);
         },
         volume_},
        {[this](auto& chunks, auto& image, auto&) { // zeros with a checksum
             chunks[1].kind = chunks[5].kind = Kind(0);
             image.partitions[1].crc = crcOf(volume_);
         },
         volume_},
        {[](auto& chunks, auto&, auto&) { chunks[0].kind = Kind::adc; }, left},
        {[](auto& chunks, auto&, auto&) { chunks[0].kind = Kind(3); }, left},
        {[](auto& chunks, auto& image, auto&) {
             chunks.resize(1);
             chunks[0].sectors = image.partitions[1].sectors = 32769;
         },
         left},
        {[](auto& chunks, auto&, auto&) { chunks[1].firstSector++; }, table},
        {[](auto& chunks, auto&, auto&) { chunks[0].sectors = UINT64_MAX / 512; }, table},
        {[](auto& chunks, auto& image, auto&) {
             chunks[5].kind = Kind(0);
             chunks[5].sectors = (std::uint64_t{1} << 31) - chunks[5].firstSector;
             image.partitions[1].sectors = std::uint64_t{1} << 31;
         },
         table},
        {[](auto&, auto& image, auto&) { image.partitions[1].sectors++; }, table},
        {[](auto& chunks, auto& image, auto&) { chunks[0].offset = image.dataSize; }, table},
        {[](auto& chunks, auto&, auto&) { chunks[0].offset = UINT64_MAX - 16; }, table},
        {[](auto& chunks, auto& image, auto&) { chunks[0].size = image.dataSize; }, table},
        {[](auto& chunks, auto&, auto&) { chunks[2].offset = chunks[0].offset; }, table},
        {[](auto& chunks, auto&, auto&) { chunks[3].size--; }, table},
        {[](auto&, auto& image, auto&) { image.partitions[0].crc ^= 1; }, checksum},
        {[](auto&, auto& image, auto&) { image.partitions[1].crc ^= 1; }, checksum},
        {[](auto&, auto& image, auto&) { image.dataCrc ^= 1; }, checksum},
        {[](auto& chunks, auto&, auto& data) { data[chunks[4].offset] ^= 1; }, checksum},
        {[](auto&, auto& image, auto& data) { // no chunk has it
             data += "more";
             image.dataSize += 4;
         },
         checksum},
        {[](auto& chunks, auto&, auto& data) { data[chunks[2].offset + 9] ^= 1; },
         "the image is damaged: it cannot be inflated"}};
    for (const auto kind : {Kind::zlib, Kind::bzip2}) {
        std::ostringstream out;
        tools::UdifWriter writer(out, {.kind = kind});
        writer.beginPartition("free (Apple_Free : 1)");
        writer.append(noise(1572864));
        writer.beginPartition("disk (Apple_HFS : 2)");
        writer.append(volume_);
        writer.finish();
        for (std::size_t n = 0; const auto& [change, result] : cases) {
            UdifContents contents = writer.contents();
            std::string data = out.str().substr(0, contents.dataSize);
            change(contents.partitions[1].chunks, contents, data);
            EXPECT_TRUE(unpacked(data, contents) == result) << n << ": " << result.substr(0, 50);
            ++n;
        }
    }
}

TEST_F(UdifInflate, EndsWhenItIsToldTo) {
    const std::string image = tools::udifOf({{"", noise(2560000)}, {"", volume_}}, {});
    const ImageFile file(test::writeFile(folder_ / "image", image));
    const UdifTrailer trailer = readUdifTrailer(file);
    const auto table =
        parseUdifTable(file.read(trailer.propertyList.offset, trailer.propertyList.size), trailer);
    const Interruption interruption(std::chrono::minutes(10));
    ::raise(SIGTERM);
    EXPECT_THROW(inflateUdif(file, trailer, *table, {}, folder_.path(), interruption), Exception);
}

} // namespace join::platform::hdiutil
