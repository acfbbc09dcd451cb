#include "platform/linux/files/LinuxFileManager.h"

#include "platform/linux/files/Descriptor.h"
#include "platform/linux/files/Folders.h"
#include "platform/linux/files/StagedFile.h"
#include "platform/linux/files/StagedPath.h"
#include "platform/linux/files/TreeCopy.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace join::platform {

namespace {

constexpr mode_t defaultFileMode = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;

/// Returns the size of an open regular file, or nothing for anything else.
std::optional<std::size_t> regularSize(const Descriptor& file) {
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return static_cast<std::size_t>(status.st_size);
}

bool mayBeReplaced(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode) || S_ISLNK(status.st_mode);
}

/// Returns whether a folder that cannot be renamed may still be removed: it belongs to an overlay's lower
/// layer, or the disk is too full for another name.
bool cannotBeMoved(int error) { return error == EXDEV || error == ENOSPC || error == EDQUOT; }

class OpenFile : public ReadableFile {
public:
    OpenFile(Descriptor file, std::size_t size) : file_(std::move(file)), size_(size) {}

    std::uint64_t size() const override { return size_; }
    std::size_t read(std::uint64_t offset, std::span<char> buffer) const override {
        ssize_t count = -1;
        do
            count = ::pread(file_.get(), buffer.data(), buffer.size(), static_cast<off_t>(offset));
        while (count < 0 && errno == EINTR);
        return count < 0 ? 0 : static_cast<std::size_t>(count);
    }

private:
    Descriptor file_;
    std::size_t size_;
};

} // namespace

bool LinuxFileManager::exists(const std::string& path) {
    struct stat status {};
    return ::stat(realPath(path).c_str(), &status) == 0;
}

bool LinuxFileManager::createFolder(const std::string& path) {
    const std::string real = realPath(path);
    if (real.empty() || !makeFolders(real))
        return false;
    closeToOthers(AT_FDCWD, real.c_str());
    return true;
}

bool LinuxFileManager::copy(const std::string& source, const std::string& target) {
    return copyTo(source, target, Way::copy);
}

bool LinuxFileManager::install(const std::string& source, const std::string& target) {
    return copyTo(source, target, Way::install);
}

bool LinuxFileManager::installFromVolume(const std::string& source, const std::string& target) {
    return copyTo(source, target, Way::installFromVolume);
}

bool LinuxFileManager::replace(const std::string& source, const std::string& target) {
    return copyTo(source, target, Way::replace);
}

bool LinuxFileManager::copyTo(const std::string& source, const std::string& target, Way way) {
    const std::string from = realPath(source);
    const std::string to = realPath(target);
    struct stat status {};
    if (from.empty() || to.empty() || (way != Way::replace && ::lstat(to.c_str(), &status) == 0))
        return false;
    // Opened before anything is written: it is told what went wrong since.
    const Descriptor folder = openForReading(AT_FDCWD, parentOf(to).c_str(), O_DIRECTORY);
    StagedPath staged(to);
    const auto commit = [&] {
        return way != Way::replace
                   ? staged.commitNew()
                   : staged.commitInstead() || (cannotBeMoved(errno) && removeTree(to) && staged.commitNew());
    };
    // One call for all files: one for each takes a hundred times as long.
    const bool isFlushed = way == Way::copy || !folder;
    const bool mayLink = way == Way::installFromVolume &&
                         withoutLinks(from).starts_with(withoutLinks(root_.toReal("/Volumes")) + "/");
    if (copyTree(from, staged.path(), mayLink) && (isFlushed || hasFlushed(::syncfs(folder.get()))) &&
        commit() && (isFlushed || hasFlushed(::fsync(folder.get()))))
        return true;
    if (log_ && errno != EEXIST)
        log_->write(source + " could not be copied to " + target + " : " + std::strerror(errno));
    return false;
}

bool LinuxFileManager::remove(const std::string& path) {
    const std::string real = realPath(path);
    if (!isFolder(real))
        return removeTree(real);
    // It loses its name at once: if this process were killed now, half a bundle would pass for a whole one.
    const StagedPath apart(real);
    return ::rename(real.c_str(), apart.path().c_str()) == 0 || (cannotBeMoved(errno) && removeTree(real));
}

std::optional<std::string> LinuxFileManager::read(const std::string& path) {
    const Descriptor file = openForReading(AT_FDCWD, realPath(path).c_str());
    const auto size = regularSize(file);
    if (!size || *size > maximumReadSize)
        return std::nullopt;
    return readAll(file.get(), maximumReadSize);
}

bool LinuxFileManager::create(const std::string& path, std::string_view contents) {
    const std::string real = realPath(path);
    StagedFile file(real, defaultFileMode);
    return !real.empty() && mayBeReplaced(real) && file.open() && file.write(contents) && file.commit();
}

bool LinuxFileManager::truncate(const std::string& path) {
    const Descriptor file(::open(realPath(path).c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    return regularSize(file) && ::ftruncate(file.get(), 0) == 0;
}

MappedFile LinuxFileManager::map(const std::string& path) {
    const Descriptor file = openForReading(AT_FDCWD, realPath(path).c_str());
    const auto size = regularSize(file);
    if (!size || *size == 0)
        return nullptr;
    void* start = ::mmap(nullptr, *size, PROT_READ, MAP_PRIVATE, file.get(), 0);
    if (start == MAP_FAILED)
        return nullptr;
    using Bytes = std::span<const std::byte>;
    return {new Bytes(static_cast<const std::byte*>(start), *size), [start](const Bytes* bytes) {
                ::munmap(start, bytes->size());
                delete bytes;
            }};
}

std::unique_ptr<ReadableFile> LinuxFileManager::open(const std::string& path) {
    Descriptor file = openForReading(AT_FDCWD, realPath(path).c_str());
    const auto size = regularSize(file);
    return size ? std::make_unique<OpenFile>(std::move(file), *size) : nullptr;
}

/// Returns an empty text for a path that names nothing. The kernel would cut a path off at a zero byte, and
/// use another file.
std::string LinuxFileManager::realPath(const std::string& path) const {
    return path.starts_with('/') && path.find('\0') == std::string::npos ? root_.toReal(path) : "";
}

} // namespace join::platform
