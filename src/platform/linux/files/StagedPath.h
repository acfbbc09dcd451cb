#pragma once

#include <string>

namespace join::platform {

/// A private name beside a target, ".NAME.<pid>.<number>.partial", under which a file or folder is built
/// before it appears whole under its own name. The name is unique, so any number can be in use for one
/// target. The constructor removes what dead processes left for the same target; the destructor removes what
/// was not committed. What cannot be removed, such as another user's files, stays and does no harm.
class StagedPath {
public:
    /// The target is an absolute normalised path. Its folder may be missing, but then nothing can be created
    /// there.
    explicit StagedPath(const std::string& target);
    ~StagedPath();
    StagedPath(const StagedPath&) = delete;
    StagedPath& operator=(const StagedPath&) = delete;

    /// Where to build it. Nothing exists there yet.
    const std::string& path() const { return path_; }

    /// Gives it its own name. Fails with EEXIST in errno if anything has that name, even a dangling link.
    bool commitNew();

    /// Gives it its own name, replacing an older file.
    bool commitOver();

    /// Gives it its own name, replacing anything, even a whole folder, which the destructor then removes. On
    /// a failure, what was there stays.
    bool commitInstead();

private:
    std::string target_;
    std::string path_;
};

/// Moves a file or folder to a place that may be taken. What was there is at one of the other two paths
/// afterwards, or back in its place on a failure; errno then says why. Nothing may exist at aside beforehand.
bool moveInPlace(const std::string& from, const std::string& place, const std::string& aside);

} // namespace join::platform
