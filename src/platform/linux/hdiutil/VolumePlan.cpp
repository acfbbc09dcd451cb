#include "platform/linux/hdiutil/VolumePlan.h"

#include "platform/Exception.h"
#include "platform/Utf8.h"

#include <algorithm>
#include <array>
#include <climits>
#include <string_view>
#include <sys/stat.h>
#include <unordered_map>

namespace join::platform::hdiutil {

namespace {

constexpr std::size_t maximumName = NAME_MAX;
constexpr std::size_t maximumPath = 1024;
constexpr mode_t permissions = S_IRWXU | S_IRWXG | S_IRWXO;

/// As a Mac shows a volume that knows no modes: anything in it may be started.
constexpr mode_t modeWithoutOne = S_IRWXU | S_IRGRP | S_IXGRP | S_IROTH | S_IXOTH;

bool isControl(char byte) { return (byte >= '\0' && byte < ' ') || byte == '\x7F'; }

/// Where HFS+ keeps what hard links share.
bool isStoreOfHardLinks(std::string_view name) {
    return name.ends_with("HFS+ Private Data") || name.starts_with(".HFS+ Private Directory Data");
}

bool isOfTheFileSystem(std::string_view name, ImageKind kind) {
    if (kind == ImageKind::iso)
        return name == "[BOOT]";
    return isStoreOfHardLinks(name) || name == ".journal" || name == ".journal_info_block";
}

std::string_view firstComponent(std::string_view path) { return path.substr(0, path.find('/')); }

/// The innermost file system, which decides how the listing is read.
ImageKind volumeKind(const Listing& listing, const ImageFacts& image) {
    const std::vector<std::string>& types = listing.types;
    const std::size_t layers = image.kind == ImageKind::udif ? 2 : 1;
    const bool isLayeredAsTold =
        types.size() == layers && (image.kind != ImageKind::udif || types.front() == "Dmg");
    if (isLayeredAsTold && types.back() == "HFS" && listing.offset == image.volumeOffset)
        return ImageKind::hfsPlus;
    if (isLayeredAsTold && types.back() == "APFS" && listing.offset == 0)
        return ImageKind::apfs;
    if (isLayeredAsTold && types.back() == "Iso" && listing.offset == 0)
        return ImageKind::iso;
    throw Exception("the image does not hold one volume of a known kind");
}

class Planner {
public:
    Planner(const Listing& listing, ImageKind kind, const VolumeLimits& limits)
        : listing_(listing), kind_(kind), limits_(limits) {}

    VolumePlan plan() {
        plan_.name = volumeName();
        if (!isPlainName(plan_.name) || plan_.name.starts_with('.'))
            throw Exception("the volume's name cannot be used");
        if (listing_.entries.size() > limits_.entries)
            throw Exception("the volume holds too many files");
        for (const ListedEntry& entry : listing_.entries)
            add(entry);
        for (const PlannedEntry& entry : plan_.entries)
            requireFolderOf(entry.path);
        return std::move(plan_);
    }

private:
    /// Files of an HFS+ volume are listed below a top folder of its name.
    bool hasTopFolder() const { return kind_ == ImageKind::hfsPlus; }

    std::string volumeName() const {
        if (!hasTopFolder())
            return listing_.volumeName;
        return listing_.entries.empty() ? std::string()
                                        : std::string(firstComponent(listing_.entries.front().path));
    }

    std::string pathInVolume(const ListedEntry& entry) const {
        if (!hasTopFolder())
            return entry.path;
        if (entry.path == plan_.name && entry.isFolder)
            return {};
        if (!entry.path.starts_with(plan_.name + "/"))
            throw Exception("the image holds more than one volume");
        return entry.path.substr(plan_.name.size() + 1);
    }

    void add(const ListedEntry& entry) {
        PlannedEntry planned{.kind = kindOf(entry),
                             .path = pathInVolume(entry),
                             .size = entry.size,
                             .mode = entry.mode.value_or(modeWithoutOne) & permissions,
                             .modified = entry.modified,
                             .linkText = linkTextOf(entry)};
        requirePlainPath(planned.path, entry);
        if (isOfTheFileSystem(firstComponent(planned.path), kind_))
            hide(planned);
        if (planned.kind == EntryKind::link)
            requireLinkText(planned);
        if (planned.kind != EntryKind::hidden && !kinds_.emplace(planned.path, planned.kind).second)
            throw Exception("the volume holds two things of the same name: " + planned.path);
        weigh(entry.size);
        plan_.entries.push_back(std::move(planned));
    }

    /// 7zz puts a separator behind a last ".." of an ISO volume's link, where none can be.
    std::string linkTextOf(const ListedEntry& entry) const {
        std::string text = entry.linkText;
        if (kind_ == ImageKind::iso && text.ends_with("./"))
            text.pop_back();
        return text;
    }

    static EntryKind kindOf(const ListedEntry& entry) {
        const mode_t type = entry.mode.value_or(0) & S_IFMT;
        const bool isLink = type == S_IFLNK || !entry.linkText.empty();
        if (entry.isFolder && !isLink && (type == 0 || type == S_IFDIR))
            return EntryKind::folder;
        if (!entry.isFolder && isLink)
            return EntryKind::link;
        if (!entry.isFolder && (type == 0 || type == S_IFREG))
            return EntryKind::file;
        throw Exception("the volume holds something else than files, folders and links");
    }

    /// The empty path is the volume's own.
    void requirePlainPath(std::string_view path, const ListedEntry& entry) const {
        const bool isVolume = path.empty() && hasTopFolder() && entry.isFolder;
        bool isPlain = isVolume || path.size() <= maximumPath;
        std::size_t depth = 0;
        for (std::string_view rest = path; isPlain && !isVolume; ++depth) {
            const std::string_view name = firstComponent(rest);
            isPlain = isPlainName(name) && depth <= limits_.depth;
            if (name.size() == rest.size())
                break;
            rest.remove_prefix(name.size() + 1);
        }
        if (!isPlain)
            throw Exception("the volume holds a name that cannot be used");
    }

    /// A file that has hard links would show as an empty one.
    static void hide(PlannedEntry& entry) {
        if (entry.kind != EntryKind::folder && isStoreOfHardLinks(firstComponent(entry.path)))
            throw Exception("the volume holds hard links");
        entry.kind = EntryKind::hidden;
    }

    static void requireLinkText(const PlannedEntry& link) {
        const bool isListed = link.size == 0 && !link.linkText.empty() && link.linkText.size() < PATH_MAX;
        const bool isPutOut = link.size > 0 && link.size < PATH_MAX;
        if (!isListed && !isPutOut)
            throw Exception("the volume holds a link to nowhere: " + link.path);
    }

    void weigh(std::uint64_t size) {
        if (size > limits_.bytes - plan_.bytes)
            throw Exception("the volume is too large");
        plan_.bytes += size;
    }

    void requireFolderOf(const std::string& path) const {
        const auto separator = path.rfind('/');
        if (separator == std::string::npos || isOfTheFileSystem(firstComponent(path), kind_))
            return;
        const auto folder = kinds_.find(path.substr(0, separator));
        if (folder == kinds_.end() || folder->second != EntryKind::folder)
            throw Exception("the volume holds a file in no folder: " + path);
    }

    const Listing& listing_;
    ImageKind kind_;
    const VolumeLimits& limits_;
    VolumePlan plan_;
    std::unordered_map<std::string, EntryKind> kinds_;
};

} // namespace

bool isPlainName(std::string_view name) {
    return !name.empty() && name != "." && name != ".." && name.size() <= maximumName &&
           name.find('/') == std::string_view::npos && std::none_of(name.begin(), name.end(), isControl) &&
           isUtf8(name);
}

VolumePlan planVolume(const Listing& listing, const ImageFacts& image, const VolumeLimits& limits) {
    return Planner(listing, volumeKind(listing, image), limits).plan();
}

} // namespace join::platform::hdiutil
