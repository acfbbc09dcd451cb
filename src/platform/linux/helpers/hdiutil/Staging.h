#pragma once

#include "platform/linux/files/StagedPath.h"

#include <string>

namespace join::platform::hdiutil {

/// Where volumes are made and taken apart, for a StagedPath: beside the folder of the volumes, on the same
/// file system but not seen with them.
std::string placeOfWork(const std::string& volumes);

/// A private folder there, in which a volume is made. It goes away with all that it holds; what killed
/// processes left of theirs goes with the making of this.
class Staging {
public:
    /// Throws Exception when it cannot be made.
    explicit Staging(const std::string& volumes);

    const std::string& path() const { return place_.path(); }

    /// Gives a folder in here its place among the volumes. What stood there comes in here. Throws Exception
    /// with all as it was.
    void show(const std::string& folder, const std::string& volume) const;

private:
    StagedPath place_;
};

} // namespace join::platform::hdiutil
