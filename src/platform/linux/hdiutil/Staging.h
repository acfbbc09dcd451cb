#pragma once

#include "platform/linux/StagedPath.h"

#include <string>

namespace join::platform::hdiutil {

/// A private folder beside the folder of the volumes, on the same file system but not seen with them, where a
/// volume is made or taken apart. It goes away with all that it holds; what killed processes left of theirs
/// goes with the making of this. One at a time in a process.
class Staging {
public:
    /// Throws Exception when it cannot be made.
    explicit Staging(const std::string& volumes);

    const std::string& path() const { return place_.path(); }

    /// Gives a folder in here its place among the volumes. What stood there comes in here. Throws Exception
    /// with all as it was.
    void show(const std::string& folder, const std::string& volume) const;

    /// Takes a volume in here, at once. Throws Exception when it stays.
    void take(const std::string& volume) const;

    /// Empties this now; false when something cannot be removed.
    bool clear() const;

private:
    StagedPath place_;
};

} // namespace join::platform::hdiutil
