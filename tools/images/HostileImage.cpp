#include "images/HostileImage.h"

#include "images/MacVolume.h"
#include "images/Numbers.h"
#include "images/ScratchFolder.h"
#include "images/UdifWriter.h"
#include "images/Volume.h"

#include <filesystem>
#include <random>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace join::tools {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view payload = "written by a hostile image";

std::string volumeOf(const ScratchFolder& folder, const std::string& name) {
    std::string volume;
    makeHfsVolume({folder.path(), name}, [&](std::string_view bytes) { volume += bytes; });
    return volume;
}

std::string isoOf(const ScratchFolder& folder, const std::string& name) {
    std::string volume;
    makeIsoVolume({folder.path(), name}, [&](std::string_view bytes) { volume += bytes; });
    return volume;
}

/// A name as the Rock Ridge extension of an ISO volume holds it: an NM entry with its length, version and
/// flags.
std::string rockRidgeName(std::string_view name) {
    const std::string head{'N', 'M', static_cast<char>(name.size() + 5), 1, 0};
    return head + std::string(name);
}

std::string noise(std::size_t size) {
    std::mt19937 generator; // NOLINT(bugprone-random-generator-seed): the same image each time
    std::string bytes;
    while (bytes.size() < size)
        bytes += static_cast<char>(generator());
    return bytes;
}

} // namespace

std::string harmlessVolume() {
    const ScratchFolder folder;
    const fs::path tool = folder.write("Tool.app/Contents/MacOS/tool", "#!/bin/sh\n");
    fs::permissions(tool, fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec);
    folder.write("text", std::string(1 << 20, 't'));
    folder.write("noise", noise(1 << 20));
    return volumeOf(folder, "Harmless");
}

std::string cutInTheMiddle(std::string_view image) { return std::string(image.substr(0, image.size() / 2)); }

std::string withFlippedByte(std::string image, std::size_t offset) {
    image.at(offset) = static_cast<char>(image.at(offset) ^ 0x10);
    return image;
}

std::string withTrailerPointingOutside(std::string image) {
    constexpr std::size_t placeOfListOffset = 216;
    writeBig64(image, image.size() - udifTrailerSize + placeOfListOffset, image.size() + 4096);
    return image;
}

std::string withTooManyChunks(std::string image) {
    constexpr std::string_view tag = "<data>";
    constexpr std::size_t countInBase64 = 268; // of the count at byte 200, its three low bytes
    const std::size_t table = image.rfind(tag);
    if (table == std::string::npos)
        throw std::runtime_error("no block table");
    return image.replace(table + tag.size() + countInBase64, 4, "////");
}

std::string withChunkOutside(std::string_view volume, ChunkFault fault) {
    std::ostringstream out;
    UdifWriter writer(out, {});
    writer.append(volume);
    writer.finish();

    UdifContents contents = writer.contents();
    UdifChunk& chunk = contents.partitions.front().chunks.front();
    switch (fault) {
    case ChunkFault::offset:
        chunk.offset = 2 * out.str().size();
        break;
    case ChunkFault::size:
        chunk.size = 2 * out.str().size();
        break;
    case ChunkFault::overflow:
        chunk.offset = UINT64_MAX - 16;
        break;
    case ChunkFault::sectors:
        chunk.sectors = UINT64_MAX / udifSectorSize;
        break;
    }
    return out.str().substr(0, contents.dataSize) + udifTail(contents);
}

std::string zeroBomb(std::uint64_t size) {
    const ScratchFolder folder;
    fs::resize_file(folder.write("zeros", ""), size);
    std::ostringstream out;
    UdifWriter writer(out, {});
    makeHfsVolume({folder.path(), "Bomb"}, [&](std::string_view bytes) { writer.append(bytes); });
    writer.finish();
    return out.str();
}

std::string volumeNamed(std::string_view name) {
    const ScratchFolder folder;
    folder.write("payload", payload);
    const std::string placeholder(name.size(), 'x');
    return renamedInCatalogue(volumeOf(folder, placeholder), placeholder, name);
}

std::string volumeWithFolderNamed(std::string_view name) {
    const ScratchFolder folder;
    const std::string placeholder(name.size(), 'x');
    folder.write(placeholder + "/payload", payload);
    return renamedInCatalogue(volumeOf(folder, "Hostile"), placeholder, name);
}

std::string isoWithFolderNamed(std::string_view name) {
    const ScratchFolder folder;
    const std::string placeholder(name.size(), 'x');
    folder.write(placeholder + "/payload", payload);
    return replaced(isoOf(folder, "Hostile"), rockRidgeName(placeholder), rockRidgeName(name));
}

std::string isoNamed(const std::string& name) {
    const ScratchFolder folder;
    folder.write("payload", payload);
    return isoOf(folder, name);
}

std::string volumeWithFileBehindLink(const std::string& target, const std::string& file) {
    const ScratchFolder folder;
    folder.write("way/" + file, payload);
    fs::create_symlink(target, folder.path() / "wax"); // sorted before the folder, so unpacked first
    return renamedInCatalogue(volumeOf(folder, "Hostile"), "wax", "way");
}

std::string htmlPage() {
    return "<!DOCTYPE html>\n<html><head><title>Sign in</title></head><body>Please sign in "
           "first.</body></html>\n";
}

std::vector<HostileImage> damagedImages() {
    const std::string volume = harmlessVolume();
    const std::string image = udifOf(volume, ChunkKind::zlib);
    const std::string plain = udifOf(volume, ChunkKind::raw);
    return {{"nothing", ""},
            {"html-page", htmlPage()},
            {"cut", cutInTheMiddle(image)},
            {"cut-volume", cutInTheMiddle(volume)},
            {"trailer-outside", withTrailerPointingOutside(image)},
            {"too-many-chunks", withTooManyChunks(image)},
            {"chunk-offset-outside", withChunkOutside(volume, ChunkFault::offset)},
            {"chunk-size-outside", withChunkOutside(volume, ChunkFault::size)},
            {"chunk-overflow", withChunkOutside(volume, ChunkFault::overflow)},
            {"chunk-sectors-outside", withChunkOutside(volume, ChunkFault::sectors)},
            {"flipped-byte-compressed", withFlippedByte(image, 100)},
            {"flipped-byte-plain", withFlippedByte(plain, plain.size() / 2)}};
}

std::vector<HostileImage> maliciousImages(const std::string& linkTarget) {
    std::vector<HostileImage> images;
    const auto add = [&](const std::string& name, const std::string& volume) {
        images.push_back({name, udifOf(volume, ChunkKind::zlib)});
        images.push_back({name + "-bare", volume});
    };
    add("volume-dot-dot", volumeNamed(".."));
    add("volume-path", volumeNamed("../../escaped"));
    add("volume-colon", volumeNamed("a:b"));
    add("folder-dot-dot", volumeWithFolderNamed(".."));
    add("folder-path", volumeWithFolderNamed("../../escaped"));
    add("folder-slash", volumeWithFolderNamed("a/b"));
    add("folder-absolute", volumeWithFolderNamed("/tmp/escaped"));
    add("file-behind-link", volumeWithFileBehindLink(linkTarget, "payload"));
    images.push_back({"iso-volume-dot-dot", isoNamed("..")});
    images.push_back({"iso-volume-path", isoNamed("../../escaped")});
    images.push_back({"iso-folder-dot-dot", isoWithFolderNamed("..")});
    images.push_back({"iso-folder-path", isoWithFolderNamed("../../escaped")});
    images.push_back({"iso-folder-absolute", isoWithFolderNamed("/tmp/escaped")});
    return images;
}

} // namespace join::tools
