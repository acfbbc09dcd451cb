#pragma once

#include <string>

namespace join::platform {

/// A private name beside a target, ".NAME.<pid>.partial", under which a file or folder is made before it
/// appears whole under its own name. Making this object takes away what dead processes left for the same
/// target; destroying it takes away what was not committed. One at a time for each target in a process: a
/// second one would take the first one's work for its own leftover.
class StagedPath {
public:
    /// The target is an absolute normalised path. Its folder need not exist; nothing can be made there then.
    explicit StagedPath(const std::string& target);
    ~StagedPath();
    StagedPath(const StagedPath&) = delete;
    StagedPath& operator=(const StagedPath&) = delete;

    /// Where to make it. Nothing stands there yet.
    const std::string& path() const { return path_; }

    /// Gives it its own name; fails when anything, a dangling link too, has that name already.
    bool commitNew();

    /// Gives it its own name in place of an older file.
    bool commitOver();

private:
    std::string target_;
    std::string path_;
};

} // namespace join::platform
