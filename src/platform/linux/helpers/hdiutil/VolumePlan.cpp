#include "platform/linux/helpers/hdiutil/VolumePlan.h"

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

using namespace std::string_view_literals;

constexpr std::size_t maximumPath = 1024;
/// What a mode may grant: only the owner writes.
constexpr mode_t permissions = S_IRWXU | S_IRGRP | S_IXGRP | S_IROTH | S_IXOTH;

std::string_view firstComponent(std::string_view path) { return path.substr(0, path.find('/')); }

/// A name at the top of a volume that belongs to the file system itself.
struct OwnThing {
    ImageKind kind;
    std::string_view name;
    std::string_view hardLinked = {}; ///< if it stores hard links' contents: how their names begin
};

/// Stores of hard links, the journal, what APFS has yet to remove, what a disc starts a computer with. The
/// name of HFS+'s store of files begins with four NULs, that of folders ends with a carriage return; how 7zz
/// shows these depends on its version.
constexpr OwnThing ownThings[] = {{ImageKind::hfsPlus, "[HFS+ Private Data]"sv, "/iNode"sv},
                                  {ImageKind::hfsPlus, "HFS+ Private Data"sv, "/iNode"sv},
                                  {ImageKind::hfsPlus, "____HFS+ Private Data"sv, "/iNode"sv},
                                  {ImageKind::hfsPlus, "\0\0\0\0HFS+ Private Data"sv, "/iNode"sv},
                                  {ImageKind::hfsPlus, ".HFS+ Private Directory Data\r"sv, "/dir_"sv},
                                  {ImageKind::hfsPlus, ".HFS+ Private Directory Data_"sv, "/dir_"sv},
                                  {ImageKind::hfsPlus, ".HFS+ Private Directory Data"sv, "/dir_"sv},
                                  {ImageKind::hfsPlus, ".journal"sv},
                                  {ImageKind::hfsPlus, ".journal_info_block"sv},
                                  {ImageKind::apfs, "private-dir"sv},
                                  {ImageKind::iso, "[BOOT]"sv}};

class Planner {
public:
    Planner(const Listing& listing, ImageKind kind, const VolumeLimits& limits)
        : listing_(listing), kind_(kind), limits_(limits) {}

    VolumePlan plan() {
        plan_.name = volumeName();
        if (!isPlainName(plan_.name) || plan_.name.starts_with('.'))
            throw Exception("the volume's name cannot be used");
        for (const ListedEntry& entry : listing_.entries)
            add(entry);
        for (const auto& [path, kind] : kinds_) {
            const auto separator = path.rfind('/');
            const auto folder = kinds_.find(path.substr(0, separator));
            if (separator != std::string::npos &&
                (folder == kinds_.end() || folder->second != EntryKind::folder))
                throw Exception("the volume holds a file in no folder: " + path);
        }
        return std::move(plan_);
    }

private:
    /// Files of an HFS+ volume are listed below a top folder with the volume's name.
    bool hasTopFolder() const { return kind_ == ImageKind::hfsPlus; }

    std::string volumeName() const {
        if (kind_ == ImageKind::udif || listing_.types != std::vector<std::string>{typeName(kind_)})
            throw Exception("7zz takes the volume for something else than it is");
        if (listing_.volumeNames.size() > 1)
            throw Exception("the image holds more than one volume");
        if (!hasTopFolder())
            return listing_.volumeNames.empty() ? std::string() : listing_.volumeNames.front();
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
        PlannedEntry planned{.kind = EntryKind::hidden,
                             .path = pathInVolume(entry),
                             .size = entry.size,
                             .mode = entry.mode.value_or(permissions) & permissions,
                             .modified = entry.modified,
                             .linkText = entry.linkText};
        // In an ISO volume's link, 7zz adds a separator after a last "..", where there cannot be one.
        if (kind_ == ImageKind::iso && planned.linkText.ends_with("./"))
            planned.linkText.pop_back();
        const std::string_view top = firstComponent(planned.path);
        const auto* const own = std::ranges::find_if(
            ownThings, [&](const OwnThing& thing) { return thing.kind == kind_ && thing.name == top; });
        // 7zz shows hard-linked files as empty: their contents are in the store. It also holds files that
        // were removed while open ("temp" and a number), which nobody misses.
        if (own == std::end(ownThings))
            show(planned, entry);
        else if (!own->hardLinked.empty() && planned.path.substr(top.size()).starts_with(own->hardLinked))
            throw Exception("the volume holds hard links");
        if (entry.size > limits_.bytes - plan_.bytes)
            throw Exception("the volume is too large");
        plan_.bytes += entry.size;
        plan_.entries.push_back(std::move(planned));
    }

    void show(PlannedEntry& planned, const ListedEntry& entry) {
        planned.kind = kindOf(entry);
        requirePlainPath(planned);
        const std::size_t text = planned.size > 0 ? planned.size : planned.linkText.size();
        if (planned.kind == EntryKind::link && (text == 0 || text >= PATH_MAX))
            throw Exception("the volume holds a link to nowhere: " + planned.path);
        if (!kinds_.emplace(planned.path, planned.kind).second)
            throw Exception("the volume holds two things of the same name: " + planned.path);
    }

    static EntryKind kindOf(const ListedEntry& entry) {
        const mode_t type = entry.mode.value_or(0) & S_IFMT;
        const bool isLink = type == S_IFLNK || !entry.linkText.empty();
        if (isLink && !entry.isFolder)
            return EntryKind::link;
        if (isLink || (type != 0 && type != (entry.isFolder ? S_IFDIR : S_IFREG)))
            throw Exception("the volume holds something else than files, folders and links");
        return entry.isFolder ? EntryKind::folder : EntryKind::file;
    }

    /// The empty path is that of the volume itself.
    void requirePlainPath(const PlannedEntry& entry) const {
        const std::string_view path = entry.path;
        if (path.empty() && hasTopFolder() && entry.kind == EntryKind::folder)
            return;
        const auto depth = static_cast<std::size_t>(std::ranges::count(path, '/'));
        bool isPlain = path.size() <= maximumPath && depth <= limits_.depth;
        for (std::size_t begin = 0, end = 0; isPlain && end != std::string_view::npos; begin = end + 1) {
            end = path.find('/', begin);
            isPlain = isPlainName(path.substr(begin, end - begin));
        }
        if (!isPlain)
            throw Exception("the volume holds a name that cannot be used");
    }

    const Listing& listing_;
    ImageKind kind_;
    const VolumeLimits& limits_;
    VolumePlan plan_;
    std::unordered_map<std::string, EntryKind> kinds_;
};

} // namespace

bool isPlainName(std::string_view name) {
    return !name.empty() && name != "." && name != ".." && name.size() <= NAME_MAX &&
           name.find_first_of(std::string_view("/\n\0", 3)) == std::string_view::npos && isUtf8(name);
}

VolumePlan planVolume(const Listing& listing, ImageKind kind, const VolumeLimits& limits) {
    return Planner(listing, kind, limits).plan();
}

} // namespace join::platform::hdiutil
