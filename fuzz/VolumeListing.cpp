// 7zz's listing of a volume with hostile names, links and sizes.

#include "Target.h"
#include "platform/Exception.h"
#include "platform/Utf8.h"
#include "platform/linux/helpers/hdiutil/Listing.h"
#include "platform/linux/helpers/hdiutil/Partitions.h"
#include "platform/linux/helpers/hdiutil/VolumePlan.h"

#include <map>

namespace join::fuzz {

namespace {

using namespace platform::hdiutil;

constexpr VolumeLimits limits{.entries = 50, .bytes = 10'000, .depth = 5};

void requireName(std::string_view name) {
    require(!name.empty() && name != "." && name != ".." && name.size() < 256 && platform::isUtf8(name));
    require(name.find_first_of(std::string_view("/\n\0", 3)) == std::string_view::npos);
}

/// Nothing is made outside the volume, through a link or twice.
void requireSafe(const VolumePlan& plan) {
    requireName(plan.name);
    require(plan.entries.size() <= limits.entries && plan.bytes <= limits.bytes);
    std::map<std::string_view, EntryKind> kinds;
    std::uint64_t bytes = 0;
    for (const PlannedEntry& entry : plan.entries) {
        bytes += entry.size;
        require(entry.mode <= 0777);
        if (entry.kind != EntryKind::hidden)
            require(kinds.emplace(entry.path, entry.kind).second);
    }
    require(bytes == plan.bytes);
    for (const auto& named : kinds) {
        for (std::string_view path = named.first; !path.empty();) {
            const auto slash = path.rfind('/');
            requireName(path.substr(slash + 1)); // npos + 1 is 0
            path = path.substr(0, slash == std::string_view::npos ? 0 : slash);
            require(path.empty() || kinds.at(path) == EntryKind::folder);
        }
    }
}

} // namespace

void tryOut(std::string_view input) {
    try {
        Listing listing = parseListing(input, limits.entries);
        try {
            const Extent partition = partitionOfVolume(listing);
            require(partition.offset <= UINT64_MAX - partition.size);
        } catch (const platform::Exception& refusal) {
            require(*refusal.what() != '\0');
        }
        for (const ImageKind kind : {ImageKind::hfsPlus, ImageKind::apfs, ImageKind::iso}) {
            if (kind == ImageKind::iso)
                listing.volumeNames = {"I"};
            try {
                requireSafe(planVolume(listing, kind, limits));
            } catch (const platform::Exception& refusal) {
                require(*refusal.what() != '\0');
            }
        }
    } catch (const platform::Exception& refusal) {
        require(*refusal.what() != '\0');
    }
}

} // namespace join::fuzz
