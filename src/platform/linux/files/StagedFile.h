#pragma once

#include "platform/linux/files/Descriptor.h"
#include "platform/linux/files/StagedPath.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace join::platform {

/// A new file, private to its user unless another mode is given, that is written where nobody sees it and
/// then takes the place of its destination. It has no name until then, so that not even the sudden end of the
/// process leaves anything; where the file system knows no files without a name it has that of a StagedPath.
/// Whatever was not committed goes away with this object. After a failure errno says why.
class StagedFile {
public:
    /// The destination is an absolute path. Nothing is made yet.
    explicit StagedFile(const std::string& destination, mode_t mode = S_IRUSR | S_IWUSR);

    /// Makes the file; fails when its folder takes none, or when the destination is a folder.
    bool open();

    bool write(std::string_view bytes);

    /// The bytes that its file system still takes; nothing when that cannot be told.
    std::optional<std::uint64_t> freeSpace() const;

    /// Puts it in place of an older file. There is nothing to write to afterwards.
    bool commit();

private:
    std::string destination_;
    StagedPath staged_;
    mode_t mode_;
    Descriptor file_;
    bool hasName_ = false;
};

/// Writes a whole such file.
bool writeStaged(const std::string& path, std::string_view bytes, mode_t mode = S_IRUSR | S_IWUSR);

} // namespace join::platform
