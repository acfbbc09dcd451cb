#include "images/DiskImage.h"

#include "images/UdifWriter.h"
#include "images/Volume.h"

#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>

namespace join::tools {

namespace {

/// A file that stands under its name only once it is kept; until then, and for ever if it never is, under
/// another.
class SaveFile {
public:
    explicit SaveFile(const std::filesystem::path& path)
        : path_(path), unfinished_(path.string() + ".part"),
          stream_(unfinished_, std::ios::binary | std::ios::trunc) {
        if (!stream_)
            throw std::runtime_error("cannot make " + unfinished_.string());
    }

    ~SaveFile() {
        std::error_code ignored;
        std::filesystem::remove(unfinished_, ignored);
    }

    SaveFile(const SaveFile&) = delete;
    SaveFile& operator=(const SaveFile&) = delete;

    std::ostream& stream() { return stream_; }

    void keep() {
        stream_.close();
        if (!stream_)
            throw std::runtime_error("cannot write " + unfinished_.string());
        std::filesystem::rename(unfinished_, path_);
    }

private:
    std::filesystem::path path_;
    std::filesystem::path unfinished_;
    std::ofstream stream_;
};

ChunkKind chunkKind(ImageKind kind) {
    switch (kind) {
    case ImageKind::udifZlib:
        return ChunkKind::zlib;
    case ImageKind::udifBzip2:
        return ChunkKind::bzip2;
    case ImageKind::udifAdc:
        return ChunkKind::adc;
    case ImageKind::udifLzfse:
        return ChunkKind::lzfse;
    case ImageKind::udifLzma:
        return ChunkKind::lzma;
    default:
        return ChunkKind::raw;
    }
}

} // namespace

const std::map<std::string_view, ImageKind>& imageKinds() {
    static const std::map<std::string_view, ImageKind> kinds{
        {"udif-zlib", ImageKind::udifZlib}, {"udif-bzip2", ImageKind::udifBzip2},
        {"udif-adc", ImageKind::udifAdc},   {"udif-lzfse", ImageKind::udifLzfse},
        {"udif-lzma", ImageKind::udifLzma}, {"udif-plain", ImageKind::udifPlain},
        {"hfsplus", ImageKind::hfsPlus},    {"iso", ImageKind::iso}};
    return kinds;
}

void makeDiskImage(const std::filesystem::path& folder, std::string_view volumeName, ImageKind kind,
                   const std::filesystem::path& image) {
    SaveFile file(image);
    const VolumeSource source{folder, std::string(volumeName)};
    const ByteSink asItIs = [&](std::string_view bytes) {
        if (!file.stream().write(bytes.data(), static_cast<std::streamsize>(bytes.size())))
            throw std::runtime_error("cannot write " + image.string());
    };
    if (kind == ImageKind::iso) {
        makeIsoVolume(source, asItIs);
    } else if (kind == ImageKind::hfsPlus) {
        makeHfsVolume(source, asItIs);
    } else {
        UdifWriter udif(file.stream(), {.kind = chunkKind(kind)});
        makeHfsVolume(source, [&](std::string_view bytes) { udif.append(bytes); });
        udif.finish();
    }
    file.keep();
}

} // namespace join::tools
