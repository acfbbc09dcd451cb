#include "platform/linux/helpers/hdiutil/Mount.h"

#include "platform/Exception.h"
#include "platform/linux/bundles/BootMark.h"
#include "platform/linux/files/Descriptor.h"
#include "platform/linux/files/Folders.h"
#include "platform/linux/files/StagedPath.h"
#include "platform/linux/helpers/hdiutil/Crc32.h"
#include "platform/linux/helpers/hdiutil/ImageFile.h"
#include "platform/linux/helpers/hdiutil/IsoTrees.h"
#include "platform/linux/helpers/hdiutil/Partitions.h"
#include "platform/linux/helpers/hdiutil/RawVolume.h"
#include "platform/linux/helpers/hdiutil/SevenZip.h"
#include "platform/linux/helpers/hdiutil/Staging.h"
#include "platform/linux/helpers/hdiutil/UdifTrailer.h"
#include "platform/linux/helpers/hdiutil/VolumeWriter.h"

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
        staging_.emplace(volumes_);
        ImageFacts facts = tellKind(image_);
        // This goes on meanwhile: it must have gone well before anything is shown.
        std::unique_ptr<ChildProcess> check;
        if (facts.kind == ImageKind::udif) {
            check = unpack();
            facts = tellKind(image_);
        }
        const VolumePlan plan = planVolume(prepare(facts), facts.kind, settings_.limits);
        requireRoom(plan.bytes);
        const std::string folder = makeVolume(plan, sevenZip(facts.kind));
        if (check && check->finish() != 0)
            throw Exception("the image is damaged: its checksums are wrong");
        interruption_.check();
        staging_->show(folder, volumes_ + "/" + plan.name);
        return "/Volumes/" + plan.name;
    }

private:
    SevenZip sevenZip(ImageKind kind) const {
        return {settings_.sevenZip, image_.descriptor(), kind, interruption_};
    }

    Listing list(ImageKind kind) const {
        return parseListing(textOf(*sevenZip(kind).list()), settings_.limits.entries);
    }

    /// Of the chunks as they are stored; 7zz compares those of what is in them.
    void compareChecksum(const UdifTrailer& trailer) const {
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

    /// Puts the partition that holds the volume in the place of the image of Apple's format around it. Gives
    /// the comparison of its checksums, if it has any.
    std::unique_ptr<ChildProcess> unpack() {
        const UdifTrailer trailer = parseUdifTrailer(
            image_.read(image_.size() - UdifTrailer::size, UdifTrailer::size), image_.size());
        if (trailer.isRaw) {
            compareChecksum(trailer);
            cutOut({trailer.dataOffset, trailer.dataLength});
            return nullptr;
        }
        const SevenZip image = sevenZip(ImageKind::udif);
        auto check = image.check();
        compareChecksum(trailer);
        const Extent partition = partitionOfVolume(list(ImageKind::udif));
        const auto child = image.open();
        RawVolume raw(staging_->path());
        raw.fill([&](char* buffer, std::size_t size) { return child->read(buffer, size); }, partition,
                 room());
        if (child->finish() != 0)
            throw Exception("the image is damaged: 7zz cannot open all of it");
        image_ = raw.finish();
        return check;
    }

    /// Puts a part of the image in the place of all of it, perhaps with the descriptors of a disc ended
    /// early.
    void cutOut(const Extent& part, const std::optional<std::uint64_t>& endOfDescriptors = std::nullopt) {
        RawVolume raw(staging_->path());
        std::uint64_t place = part.offset;
        const auto read = [&](char* buffer, std::size_t size) {
            interruption_.check();
            const std::uint64_t left = part.offset + part.size - place;
            const std::size_t count =
                image_.read(place, std::min<std::uint64_t>(size, left)).copy(buffer, size);
            place += count;
            return count;
        };
        raw.fill(read, {0, part.size}, room());
        if (endOfDescriptors)
            raw.patch(*endOfDescriptors, hdiutil::endOfDescriptors);
        image_ = raw.finish();
    }

    /// Leaves only what 7zz is to see: a volume without what surrounds it, a disc with the richer of its
    /// trees, which it cannot be told to take. Lists that.
    Listing prepare(const ImageFacts& facts) {
        const IsoTree tree = facts.kind == ImageKind::iso ? richerTree(image_) : IsoTree();
        if (facts.place.size != image_.size() || tree.poorer)
            cutOut(facts.place, tree.poorer);
        Listing listing = list(facts.kind);
        if (facts.kind == ImageKind::iso)
            listing.volumeNames = {tree.volumeName};
        return listing;
    }

    /// On the disk, for volumes.
    std::uint64_t room() const {
        struct statvfs disk {};
        if (::statvfs(staging_->path().c_str(), &disk) != 0)
            raise("the disk cannot be asked for its size");
        const std::uint64_t free = std::uint64_t{disk.f_bavail} * disk.f_frsize;
        return free - std::min(free, reserve);
    }

    void requireRoom(std::uint64_t bytes) const {
        if (bytes > room())
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
