#include "platform/linux/files/StagedFile.h"

#include "platform/linux/files/Folders.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/statvfs.h>
#include <unistd.h>
#include <utility>

namespace join::platform {

StagedFile::StagedFile(const std::string& destination, mode_t mode)
    : destination_(normalised(destination)), staged_(destination_), mode_(mode) {}

bool StagedFile::open() {
    if (isFolder(destination_)) {
        errno = EISDIR;
        return false;
    }
    file_ = Descriptor(::open(parentOf(destination_).c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, mode_));
    if (file_ || errno != EOPNOTSUPP)
        return static_cast<bool>(file_);
    hasName_ = true;
    constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
    file_ = Descriptor(::open(staged_.path().c_str(), flags, mode_));
    return static_cast<bool>(file_);
}

void StagedFile::adopt(Descriptor file) {
    if (std::exchange(hasName_, false))
        ::unlink(staged_.path().c_str());
    file_ = std::move(file);
}

bool StagedFile::write(std::string_view bytes) {
    if (!writeAll(file_.get(), bytes))
        return false;
    startFlush(file_.get(), bytes.size());
    return true;
}

bool StagedFile::flush() { return hasFlushed(::fdatasync(file_.get())); }

std::optional<std::uint64_t> StagedFile::freeSpace() const {
    struct statvfs found {};
    if (::fstatvfs(file_.get(), &found) != 0 || found.f_blocks == 0) // some network file systems do not tell
        return std::nullopt;
    return static_cast<std::uint64_t>(found.f_bavail) * found.f_frsize;
}

bool StagedFile::commit() {
    const std::string opened = "/proc/self/fd/" + std::to_string(file_.get());
    hasName_ = hasName_ ||
               ::linkat(AT_FDCWD, opened.c_str(), AT_FDCWD, staged_.path().c_str(), AT_SYMLINK_FOLLOW) == 0;
    return hasName_ && file_.close() && staged_.commitOver();
}

bool writeStaged(const std::string& path, std::string_view bytes, mode_t mode) {
    StagedFile file(path, mode);
    return file.open() && file.write(bytes) && file.flush() && file.commit();
}

} // namespace join::platform
