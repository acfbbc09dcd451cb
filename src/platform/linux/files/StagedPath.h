#pragma once

#include <string>

namespace join::platform {

/// A private name beside a target, ".NAME.<pid>.<number>.partial", under which a file or folder is made
/// before it appears whole under its own name. Nothing else has that name, so any number may be at work for
/// one target. Making this object takes away what dead processes left for the same target; destroying it
/// takes away what was not committed. What cannot be removed, as another user's files, stays and is in
/// nobody's way.
class StagedPath {
public:
    /// The target is an absolute normalised path. Its folder need not exist; nothing can be made there then.
    explicit StagedPath(const std::string& target);
    ~StagedPath();
    StagedPath(const StagedPath&) = delete;
    StagedPath& operator=(const StagedPath&) = delete;

    /// Where to make it. Nothing stands there yet.
    const std::string& path() const { return path_; }

    /// Gives it its own name; fails when anything, a dangling link too, has that name already: EEXIST in
    /// errno.
    bool commitNew();

    /// Gives it its own name in place of an older file.
    bool commitOver();

    /// Gives it its own name in place of anything, a whole folder too, which goes away with this object. What
    /// stood there stays on a failure.
    bool commitInstead();

private:
    std::string target_;
    std::string path_;
};

/// Moves a file or folder to a place that anything may have. What stood there is at one of the other two
/// paths afterwards, and back at its place on a failure; errno then says why. Nothing may stand aside before.
bool moveInPlace(const std::string& from, const std::string& place, const std::string& aside);

} // namespace join::platform
