#pragma once

#include "platform/linux/files/Descriptor.h"
#include "platform/linux/files/StagedPath.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace join::platform {

/// A new file that is written out of sight and then replaces its destination. It is private to the user
/// unless another mode is given. Until then it has no name, so even a sudden end of the process leaves
/// nothing behind; on file systems without unnamed files it has the name of a StagedPath. Destroying this
/// object removes a file that was not committed. After a failure errno says why.
class StagedFile {
public:
    /// The destination is an absolute path. Nothing is created yet.
    explicit StagedFile(const std::string& destination, mode_t mode = S_IRUSR | S_IWUSR);

    /// Creates the file. Fails if its folder does not allow it, or if the destination is a folder.
    bool open();

    /// Takes another file, open for appending, in place of the one created. It must be on the same file system.
    void adopt(Descriptor file);

    int descriptor() const { return file_.get(); }

    bool write(std::string_view bytes);

    /// Waits until what was written is on the disk: so even a power cut after commit() leaves the whole file.
    bool flush();

    /// Returns the free space of its file system in bytes, or nothing if that is not known.
    std::optional<std::uint64_t> freeSpace() const;

    /// Replaces any older file at the destination. Nothing can be written afterwards.
    bool commit();

private:
    std::string destination_;
    StagedPath staged_;
    mode_t mode_;
    Descriptor file_;
    bool hasName_ = false;
};

/// Writes a complete file in this way, and flushes it.
bool writeStaged(const std::string& path, std::string_view bytes, mode_t mode = S_IRUSR | S_IWUSR);

} // namespace join::platform
