#include "images/DiskImage.h"

#include "images/ScratchFolder.h"
#include "images/UdifWriter.h"
#include "images/Volume.h"

#include <array>
#include <fstream>
#include <stdexcept>
#include <string>

namespace join::tools {

namespace fs = std::filesystem;

namespace {

/// In the order of the kinds, up to the bare volumes.
constexpr std::array chunkKinds{ChunkKind::zlib,  ChunkKind::bzip2, ChunkKind::adc,
                                ChunkKind::lzfse, ChunkKind::lzma,  ChunkKind::raw};

} // namespace

const std::map<std::string_view, ImageKind>& imageKinds() {
    static const std::map<std::string_view, ImageKind> kinds{
        {"udif-zlib", ImageKind::udifZlib}, {"udif-bzip2", ImageKind::udifBzip2},
        {"udif-adc", ImageKind::udifAdc},   {"udif-lzfse", ImageKind::udifLzfse},
        {"udif-lzma", ImageKind::udifLzma}, {"udif-plain", ImageKind::udifPlain},
        {"hfsplus", ImageKind::hfsPlus},    {"iso", ImageKind::iso}};
    return kinds;
}

void makeDiskImage(const fs::path& folder, std::string_view volumeName, ImageKind kind,
                   const fs::path& image) {
    const ScratchFolder scratch(fs::absolute(image).parent_path());
    std::ofstream file(scratch.path() / "image", std::ios::binary);
    const VolumeSource source{folder, std::string(volumeName)};
    if (kind == ImageKind::iso || kind == ImageKind::hfsPlus) {
        makeVolume(kind == ImageKind::iso ? VolumeKind::iso : VolumeKind::hfsPlus, source,
                   [&](std::string_view bytes) { file << bytes; });
    } else {
        UdifWriter udif(file, {.kind = chunkKinds.at(static_cast<std::size_t>(kind))});
        makeVolume(VolumeKind::hfsPlus, source, [&](std::string_view bytes) { udif.append(bytes); });
        udif.finish();
    }
    file.close();
    if (!file)
        throw std::runtime_error("cannot write " + image.string());
    fs::rename(scratch.path() / "image", image);
}

} // namespace join::tools
