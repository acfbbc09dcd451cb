#include "platform/linux/helpers/hdiutil/Mount.h"

#include "platform/linux/bundles/BootMark.h"
#include "platform/linux/files/Folders.h"
#include "platform/linux/files/StagedPath.h"
#include "platform/linux/helpers/hdiutil/Failure.h"
#include "platform/linux/helpers/hdiutil/ImageFile.h"
#include "platform/linux/helpers/hdiutil/IsoTrees.h"
#include "platform/linux/helpers/hdiutil/Partitions.h"
#include "platform/linux/helpers/hdiutil/SevenZip.h"
#include "platform/linux/helpers/hdiutil/UdifInflate.h"
#include "platform/linux/helpers/hdiutil/VolumeWriter.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <utility>

namespace join::platform::hdiutil {

namespace {

constexpr mode_t folderMode = S_IRWXU | S_IRGRP | S_IXGRP | S_IROTH | S_IXOTH;
constexpr std::uint64_t reserve = std::uint64_t{64} << 20; ///< of disk space, for everybody else

/// Where volumes are built and taken apart, for a StagedPath: beside the folder of the volumes, on the same
/// file system, but not visible among them.
std::string placeOfWork(const SystemRoot& root) { return root.path() + "/hdiutil"; }

class Mounting {
public:
    Mounting(const std::string& image, const MountSettings& settings)
        : settings_(settings), interruption_(settings.allowed), image_(settings.root.toReal(image)),
          staging_(placeOfWork(settings.root)) {
        Confinement confinement;
        confinement.allowProgram(settings.sevenZip);
        confinement.allow(image_.descriptor(), Confinement::Access::read);
        for (const std::string& place : {settings.root.path(), settings.root.toReal("/Volumes")})
            confinement.allow(place, Confinement::Access::change);
        confinement.allow("/dev/null", Confinement::Access::change);
        if (!confinement.enter())
            fail("the process cannot be confined");
    }

    std::string mount() {
        if (::mkdir(staging_.path().c_str(), S_IRWXU) != 0)
            fail("no private folder can be made");
        ImageFacts facts = tellKind(image_);
        // This runs in the meantime: it must succeed before anything is shown.
        std::unique_ptr<ChildProcess> check;
        if (facts.kind == ImageKind::udif) {
            check = unpack();
            facts = tellKind(image_);
        }
        const VolumePlan plan = planVolume(prepare(facts), facts.kind, settings_.limits);
        if (plan.bytes > room())
            throw Exception("the disk has no room for the volume");
        const std::string folder = staging_.path() + "/volume";
        if (::mkdir(folder.c_str(), folderMode) != 0)
            fail("the volume's folder cannot be made");
        sevenZip(facts.kind).open([&](const ByteSource& source) { writeVolume(plan, folder, source); });
        image_.discard();
        if (check && check->finish() != 0)
            throw Exception("the image is damaged: its checksums are wrong");
        interruption_.check();
        std::string mountPoint = "/Volumes/" + plan.name;
        if (!moveInPlace(folder, settings_.root.toReal(mountPoint), staging_.path() + "/older"))
            fail("the volume cannot be shown");
        return mountPoint;
    }

private:
    /// Replaces the image of Apple's format by the partition in it that holds the volume. Returns the process
    /// that compares its checksums, if it has any.
    std::unique_ptr<ChildProcess> unpack() {
        const UdifTrailer trailer = readUdifTrailer(image_);
        const Extent& text = trailer.propertyList;
        if (text.size > 0 && text.size <= UdifTable::maximumText) {
            if (const auto table = parseUdifTable(image_.read(text.offset, text.size), trailer)) {
                inflate(*table, trailer);
                return nullptr;
            }
        }
        std::unique_ptr<ChildProcess> check = trailer.isRaw ? nullptr : sevenZip(ImageKind::udif).check();
        compareStored(image_, trailer, interruption_);
        if (trailer.isRaw) {
            cutOut(trailer.data);
            return nullptr;
        }
        const Extent partition = partitionOfVolume(list(ImageKind::udif));
        std::optional<ImageFile> volume;
        sevenZip(ImageKind::udif).open([&](const ByteSource& source) {
            volume = keepPart(source, partition, staging_.path(), room());
        });
        replaceImage(std::move(*volume));
        return check;
    }

    void inflate(const UdifTable& table, const UdifTrailer& trailer) {
        Listing partitions;
        for (const UdifPartition& partition : table.partitions) {
            ListedEntry& entry = partitions.entries.emplace_back();
            entry.size = partition.size;
            entry.comment = partition.name;
        }
        const Extent partition = partitionOfVolume(partitions);
        if (table.bytes > room())
            throw Exception("the disk has no room for the volume");
        replaceImage(inflateUdif(image_, trailer, table, partition, staging_.path(), interruption_));
    }

    /// Reduces the image to what 7zz must see: a volume without its surroundings, and a disc with the richer
    /// of its trees, which 7zz cannot be told to use. Lists the result.
    Listing prepare(const ImageFacts& facts) {
        const IsoTree tree = facts.kind == ImageKind::iso ? richerTree(image_) : IsoTree();
        if (facts.place.size != image_.size() || tree.poorer)
            cutOut(facts.place, tree.poorer);
        Listing listing = list(facts.kind);
        if (facts.kind == ImageKind::iso)
            listing.volumeNames = {tree.volumeName};
        return listing;
    }

    /// Replaces the image by a part of it, with the descriptors of a disc ended early if an end is given.
    void cutOut(const Extent& part, const std::optional<std::uint64_t>& end = std::nullopt) {
        std::uint64_t place = part.offset;
        const auto read = [&](char* buffer, std::size_t size) {
            interruption_.check();
            const std::uint64_t left = part.offset + part.size - place;
            const std::size_t count =
                image_.read(place, std::min<std::uint64_t>(size, left)).copy(buffer, size);
            if (end && *end - place < count)
                buffer[*end - place] = endOfDescriptors;
            place += count;
            return count;
        };
        replaceImage(keepPart(read, {0, part.size}, staging_.path(), room()));
    }

    void replaceImage(ImageFile other) {
        image_.discard();
        image_ = std::move(other);
    }

    Listing list(ImageKind kind) const {
        return parseListing(sevenZip(kind).list(), settings_.limits.entries);
    }

    SevenZip sevenZip(ImageKind kind) const {
        return {settings_.sevenZip, image_.descriptor(), kind, interruption_};
    }

    /// Returns the disk space available for volumes, in bytes.
    std::uint64_t room() const {
        struct statvfs disk {};
        if (::statvfs(staging_.path().c_str(), &disk) != 0)
            fail("the disk cannot be asked for its size");
        const std::uint64_t free = std::uint64_t{disk.f_bavail} * disk.f_frsize;
        return free - std::min(free, reserve);
    }

    const MountSettings& settings_;
    Interruption interruption_;
    ImageFile image_;
    StagedPath staging_;
};

} // namespace

std::string mountImage(const std::string& image, const MountSettings& settings) {
    if (!makeFolders(settings.root.toReal("/Volumes")))
        fail("the folder of the volumes cannot be made");
    if (!endVolumesOfEarlierBoots(settings.root)) // first of all: the caller may look there in any case
        fail("the volumes of earlier boots cannot be ended");
    return Mounting(image, settings).mount();
}

void detachVolume(const std::string& mountPoint, const SystemRoot& root) {
    constexpr std::string_view volumes = "/Volumes/";
    if (!mountPoint.starts_with(volumes) || !isPlainName(mountPoint.substr(volumes.size())))
        throw Exception("only what is directly below /Volumes can be detached");
    const std::string real = root.toReal(mountPoint);
    if (!isFolder(real))
        throw Exception("no volume is mounted there");
    // Creates nothing: a full disk takes no new folder.
    const StagedPath apart(placeOfWork(root));
    if (::rename(real.c_str(), apart.path().c_str()) != 0)
        fail("the volume cannot be taken away");
    if (!removeTree(apart.path()))
        throw Exception("the volume cannot be removed whole");
}

} // namespace join::platform::hdiutil
