#include "platform/linux/helpers/hdiutil/ImageFile.h"

#include "platform/linux/helpers/hdiutil/Failure.h"

#include <algorithm>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <tuple>
#include <unistd.h>
#include <utility>
#include <vector>

namespace join::platform::hdiutil {

namespace {

bool isZero(std::string_view bytes) {
    return bytes.empty() ||
           (bytes.front() == '\0' && std::memcmp(bytes.data(), bytes.data() + 1, bytes.size() - 1) == 0);
}

void requireWritten(bool isDone) {
    if (!isDone)
        fail("the volume cannot be unpacked");
}

} // namespace

ImageFile::ImageFile(const std::string& path) : ImageFile(openForReading(AT_FDCWD, path.c_str())) {}

ImageFile::ImageFile(Descriptor file) : file_(std::move(file)) {
    struct stat found {};
    if (!file_ || ::fstat(file_.get(), &found) != 0)
        fail("the image cannot be read");
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
            fail("the image cannot be read");
        if (count == 0)
            throw Exception("the image is being changed");
        filled += static_cast<std::size_t>(count);
    }
    return bytes;
}

void ImageFile::discard() const { std::ignore = ::ftruncate(file_.get(), 0); }

NewImage::NewImage(const std::string& folder) {
    const std::string path = folder + "/raw";
    file_ = Descriptor(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    requireWritten(file_ && ::unlink(path.c_str()) == 0);
}

std::size_t NewImage::write(std::uint64_t place, std::string_view bytes) const {
    if (isZero(bytes))
        return 0;
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t count =
            ::pwrite(file_.get(), bytes.data() + done, bytes.size() - done, static_cast<off_t>(place + done));
        requireWritten(count >= 0 || errno == EINTR);
        done += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
    return bytes.size();
}

ImageFile NewImage::finish(std::uint64_t size) {
    requireWritten(::ftruncate(file_.get(), static_cast<off_t>(size)) == 0);
    return ImageFile(std::move(file_));
}

ImageFile keepPart(const ByteSource& source, const Extent& part, const std::string& folder,
                   std::uint64_t room) {
    NewImage image(folder);
    std::vector<char> buffer(std::size_t{1} << 18);
    const std::uint64_t end = part.offset + part.size;
    std::uint64_t place = 0;
    while (const std::size_t count = source(buffer.data(), buffer.size())) {
        const std::uint64_t first = std::clamp(part.offset, place, place + count);
        const std::uint64_t last = std::clamp(end, place, place + count);
        const std::size_t written =
            image.write(first - part.offset, {buffer.data() + (first - place), last - first});
        if (written > room)
            throw Exception("the disk has no room for the volume");
        room -= written;
        place += count;
    }
    if (place < end)
        throw Exception("the image is damaged: its volume is cut off");
    return image.finish(part.size);
}

} // namespace join::platform::hdiutil
