#include "images/HostileImage.h"

#include "images/MacVolume.h"
#include "images/ScratchFolder.h"
#include "images/UdifWriter.h"
#include "images/Volume.h"

#include <filesystem>
#include <random>
#include <stdexcept>
#include <utility>

namespace join::tools {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view payload = "written by a hostile image";

/// A name in the Rock Ridge extension of an ISO volume: an NM entry with its length, version and flags.
std::string rockRidgeName(std::string_view name) {
    const std::string head{'N', 'M', static_cast<char>(name.size() + 5), 1, 0};
    return head + std::string(name);
}

/// A volume of this name (at most 32 bytes), whatever it holds: separators, "..".
std::string volumeNamed(VolumeKind kind, const std::string& name) {
    const ScratchFolder folder;
    folder.write("payload", payload);
    if (kind == VolumeKind::iso)
        return volumeOf(kind, {folder.path(), name});
    const std::string placeholder(name.size(), 'x');
    return renamedInCatalogue(volumeOf(kind, {folder.path(), placeholder}), placeholder, name);
}

/// A volume with one folder of this name, in ASCII and whatever it holds, and a file "payload" in it. In an
/// ISO volume a separator in the name is left standing.
std::string volumeWithFolderNamed(VolumeKind kind, std::string_view name) {
    const ScratchFolder folder;
    const std::string placeholder(name.size(), 'x');
    folder.write(placeholder + "/payload", payload);
    std::string volume = volumeOf(kind, {folder.path(), "Hostile"});
    return kind == VolumeKind::iso
               ? replaced(std::move(volume), rockRidgeName(placeholder), rockRidgeName(name))
               : renamedInCatalogue(std::move(volume), placeholder, name);
}

/// A volume with a link "way" and a folder "way" beside it in which a file stands: what follows the link
/// writes that file where the link points to.
std::string volumeWithFileBehindLink(const std::string& target, const std::string& file) {
    const ScratchFolder folder;
    folder.write("way/" + file, payload);
    fs::create_symlink(target, folder.path() / "wax"); // sorted before the folder, so unpacked first
    return renamedInCatalogue(volumeOf(VolumeKind::hfsPlus, {folder.path(), "Hostile"}), "wax", "way");
}

} // namespace

std::string noise(std::size_t size) {
    std::mt19937 generator; // NOLINT(bugprone-random-generator-seed): the same image each time
    std::string bytes;
    while (bytes.size() < size)
        bytes += static_cast<char>(generator());
    return bytes;
}

std::string withTooManyChunks(std::string image) {
    constexpr std::string_view tag = "<data>";
    constexpr std::size_t countInBase64 = 268; // the three low bytes of the count at byte 200
    const std::size_t table = image.rfind(tag);
    if (table == std::string::npos)
        throw std::runtime_error("no block table");
    return image.replace(table + tag.size() + countInBase64, 4, "////");
}

std::string withFlippedByte(std::string image, std::size_t offset) {
    image.at(offset) = static_cast<char>(image.at(offset) ^ 0x10);
    return image;
}

std::vector<HostileImage> maliciousImages(const std::string& linkTarget) {
    std::vector<HostileImage> images;
    const auto add = [&](const std::string& name, const std::string& volume) {
        images.push_back({name, udifOf(volume, ChunkKind::zlib)});
        images.push_back({name + "-bare", volume});
    };
    constexpr auto hfsPlus = VolumeKind::hfsPlus;
    constexpr auto iso = VolumeKind::iso;
    add("volume-dot-dot", volumeNamed(hfsPlus, ".."));
    add("volume-path", volumeNamed(hfsPlus, "../../escaped"));
    add("volume-colon", volumeNamed(hfsPlus, "a:b"));
    add("folder-dot-dot", volumeWithFolderNamed(hfsPlus, ".."));
    add("folder-path", volumeWithFolderNamed(hfsPlus, "../../escaped"));
    add("folder-slash", volumeWithFolderNamed(hfsPlus, "a/b"));
    add("folder-absolute", volumeWithFolderNamed(hfsPlus, "/tmp/escaped"));
    add("file-behind-link", volumeWithFileBehindLink(linkTarget, "payload"));
    images.push_back({"iso-volume-dot-dot", volumeNamed(iso, "..")});
    images.push_back({"iso-volume-path", volumeNamed(iso, "../../escaped")});
    images.push_back({"iso-folder-dot-dot", volumeWithFolderNamed(iso, "..")});
    images.push_back({"iso-folder-path", volumeWithFolderNamed(iso, "../../escaped")});
    images.push_back({"iso-folder-absolute", volumeWithFolderNamed(iso, "/tmp/escaped")});
    return images;
}

} // namespace join::tools
