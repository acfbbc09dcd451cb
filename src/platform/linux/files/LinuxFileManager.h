#pragma once

#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/linux/files/SystemRoot.h"

#include <utility>

namespace join::platform {

/// Files and folders by the system's paths. A path that is not absolute names nothing.
class LinuxFileManager : public FileManager {
public:
    /// With a log, a failed copy is logged with its reason, unless something exists at the target.
    explicit LinuxFileManager(SystemRoot root, Log* log = nullptr) : root_(std::move(root)), log_(log) {}

    bool exists(const std::string& path) override;
    bool createFolder(const std::string& path) override;

    /// If the source is a link, the link itself is copied, like those in a tree.
    bool copy(const std::string& source, const std::string& target) override;

    /// Flush the whole file system of the target: that is much faster than flushing many files. What a file
    /// system cannot do is not asked of it.
    bool install(const std::string& source, const std::string& target) override;
    bool installFromVolume(const std::string& source, const std::string& target) override;
    bool replace(const std::string& source, const std::string& target) override;

    /// What cannot be removed from a folder stays beside it, hidden.
    bool remove(const std::string& path) override;
    std::optional<std::string> read(const std::string& path) override;

    /// Replaces a link rather than its target. Replaces only links and files.
    bool create(const std::string& path, std::string_view contents) override;

    bool truncate(const std::string& path) override;

    /// If another program shortens the file, accessing the lost bytes ends the process (SIGBUS).
    MappedFile map(const std::string& path) override;
    std::unique_ptr<ReadableFile> open(const std::string& path) override;

private:
    enum class Way { copy, install, installFromVolume, replace };
    bool copyTo(const std::string& source, const std::string& target, Way way);
    std::string realPath(const std::string& path) const;

    SystemRoot root_;
    Log* log_;
};

} // namespace join::platform
