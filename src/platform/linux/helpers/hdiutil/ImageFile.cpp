#include "platform/linux/helpers/hdiutil/ImageFile.h"

#include "platform/Exception.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace join::platform::hdiutil {

namespace {

[[noreturn]] void raise() {
    throw Exception(std::string("the image cannot be read: ") + std::strerror(errno));
}

} // namespace

ImageFile::ImageFile(const std::string& path) : ImageFile(openForReading(AT_FDCWD, path.c_str())) {}

ImageFile::ImageFile(Descriptor file) : file_(std::move(file)) {
    struct stat found {};
    if (!file_ || ::fstat(file_.get(), &found) != 0)
        raise();
    if (!S_ISREG(found.st_mode))
        throw Exception("the image is no file");
    size_ = static_cast<std::uint64_t>(found.st_size);
}

std::string ImageFile::read(std::uint64_t offset, std::size_t size) const {
    std::string bytes(offset < size_ ? std::min<std::uint64_t>(size, size_ - offset) : 0, '\0');
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const ssize_t count = ::pread(file_.get(), bytes.data() + filled, bytes.size() - filled,
                                      static_cast<off_t>(offset + filled));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            raise();
        if (count == 0)
            throw Exception("the image is being changed");
        filled += static_cast<std::size_t>(count);
    }
    return bytes;
}

} // namespace join::platform::hdiutil
