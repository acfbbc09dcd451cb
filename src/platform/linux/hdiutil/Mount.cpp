#include "platform/linux/hdiutil/Mount.h"

#include "platform/Exception.h"
#include "platform/linux/BootMark.h"
#include "platform/linux/Descriptor.h"
#include "platform/linux/Folders.h"
#include "platform/linux/StagedPath.h"
#include "platform/linux/hdiutil/Crc32.h"
#include "platform/linux/hdiutil/ImageFile.h"
#include "platform/linux/hdiutil/IsoTrees.h"
#include "platform/linux/hdiutil/SevenZip.h"
#include "platform/linux/hdiutil/Staging.h"
#include "platform/linux/hdiutil/UdifTrailer.h"
#include "platform/linux/hdiutil/VolumeWriter.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace join::platform::hdiutil {

namespace {

constexpr mode_t folderMode = S_IRWXU | S_IRGRP | S_IXGRP | S_IROTH | S_IXOTH;
constexpr std::uint64_t reserve = std::uint64_t{64} << 20; ///< of the disk, for everybody else
constexpr std::uint64_t portion = std::uint64_t{1} << 16;  ///< of the image, read at once

[[noreturn]] void raise(const std::string& what) { throw Exception(what + ": " + std::strerror(errno)); }

class Mounting {
public:
    Mounting(const std::string& image, const MountSettings& settings)
        : settings_(settings), interruption_(settings.allowed), image_(settings.root.toReal(image)),
          volumes_(settings.root.toReal("/Volumes")) {}

    std::string mount() {
        const ImageFacts facts = tellKind(image_);
        staging_.emplace(volumes_);
        if (facts.kind == ImageKind::iso)
            chooseTree();
        const SevenZip sevenZip(settings_.sevenZip, image_.descriptor(), facts.kind, interruption_);
        // These go on meanwhile: all must have gone well before anything is shown.
        const auto check = facts.kind == ImageKind::udif ? sevenZip.check() : nullptr;
        const auto listing = sevenZip.list();
        if (check)
            compareChecksum();
        const VolumePlan plan =
            planVolume(parseListing(textOf(*listing), settings_.limits.entries), facts, settings_.limits);
        requireRoom(plan.bytes);
        const std::string folder = makeVolume(plan, sevenZip);
        if (check && check->finish() != 0)
            throw Exception("the image is damaged: its checksums are wrong");
        interruption_.check();
        staging_->show(folder, volumes_ + "/" + plan.name);
        return "/Volumes/" + plan.name;
    }

private:
    /// Of the chunks as they are stored; 7zz compares those of what is in them.
    void compareChecksum() {
        const std::string lastBytes = image_.read(image_.size() - UdifTrailer::size, UdifTrailer::size);
        const UdifTrailer trailer = parseUdifTrailer(lastBytes, image_.size());
        if (!trailer.dataCrc)
            return;
        std::uint32_t crc = 0;
        const std::uint64_t end = trailer.dataOffset + trailer.dataLength;
        for (std::uint64_t place = trailer.dataOffset; place < end; place += portion) {
            interruption_.check();
            crc = crc32(crc, image_.read(place, std::min(portion, end - place)));
        }
        if (crc != *trailer.dataCrc)
            throw Exception("the image is damaged: its checksum is wrong");
    }

    /// 7zz cannot be told which tree to take, so it gets a copy that has only one.
    void chooseTree() {
        const auto poorer = placeOfPoorerTree(image_);
        if (!poorer)
            return;
        requireRoom(image_.size());
        const std::string path = staging_->path() + "/image";
        const Descriptor copy(
            ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
        for (std::uint64_t place = 0; copy && place < image_.size(); place += portion) {
            interruption_.check();
            if (!writeAll(copy.get(), image_.read(place, portion)))
                raise("the image cannot be copied");
        }
        if (::pwrite(copy.get(), &endOfDescriptors, 1, static_cast<off_t>(*poorer)) != 1)
            raise("the image cannot be copied");
        image_ = ImageFile(path);
        ::unlink(path.c_str());
    }

    void requireRoom(std::uint64_t bytes) {
        struct statvfs disk {};
        if (::statvfs(staging_->path().c_str(), &disk) != 0)
            raise("the disk cannot be asked for its size");
        const std::uint64_t free = std::uint64_t{disk.f_bavail} * disk.f_frsize;
        if (free < reserve || bytes > free - reserve)
            throw Exception("the disk has no room for the volume");
    }

    std::string makeVolume(const VolumePlan& plan, const SevenZip& sevenZip) {
        std::string folder = staging_->path() + "/volume";
        if (::mkdir(folder.c_str(), folderMode) != 0)
            raise("the volume's folder cannot be made");
        const auto child = sevenZip.open();
        writeVolume(plan, folder, [&](char* buffer, std::size_t size) { return child->read(buffer, size); });
        if (child->finish() != 0)
            throw Exception("the image is damaged: 7zz cannot open all of it");
        return folder;
    }

    const MountSettings& settings_;
    Interruption interruption_;
    ImageFile image_;
    std::string volumes_;
    std::optional<Staging> staging_;
};

} // namespace

std::string mountImage(const std::string& image, const MountSettings& settings) {
    if (!makeFolders(settings.root.toReal("/Volumes"), folderMode))
        raise("the folder of the volumes cannot be made");
    if (!endVolumesOfEarlierBoots(settings.root)) // first of all: who asked may look there in any case
        raise("the volumes of earlier boots cannot be ended");
    return Mounting(image, settings).mount();
}

} // namespace join::platform::hdiutil
