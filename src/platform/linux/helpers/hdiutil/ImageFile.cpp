#include "platform/linux/helpers/hdiutil/ImageFile.h"

#include "platform/linux/helpers/hdiutil/Failure.h"

#include <algorithm>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace join::platform::hdiutil {

namespace {

bool isZero(std::string_view bytes) {
    return bytes.front() == '\0' && std::memcmp(bytes.data(), bytes.data() + 1, bytes.size() - 1) == 0;
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

ImageFile keepPart(const ByteSource& source, const Extent& part, const std::string& folder,
                   std::uint64_t room) {
    const auto require = [](bool isDone) {
        if (!isDone)
            fail("the volume cannot be unpacked");
    };
    const std::string path = folder + "/raw";
    Descriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    require(file && ::unlink(path.c_str()) == 0);

    std::vector<char> buffer(std::size_t{1} << 18);
    const std::uint64_t end = part.offset + part.size;
    std::uint64_t place = 0;
    while (const std::size_t count = source(buffer.data(), buffer.size())) {
        const std::uint64_t first = std::clamp(part.offset, place, place + count);
        const std::uint64_t last = std::clamp(end, place, place + count);
        const std::string_view bytes(buffer.data() + (first - place), last - first);
        place += count;
        if (bytes.empty() || isZero(bytes)) {
            require(::lseek(file.get(), static_cast<off_t>(bytes.size()), SEEK_CUR) >= 0);
            continue;
        }
        if (bytes.size() > room)
            throw Exception("the disk has no room for the volume");
        room -= bytes.size();
        require(writeAll(file.get(), bytes));
    }
    if (place < end)
        throw Exception("the image is damaged: its volume is cut off");
    require(::ftruncate(file.get(), static_cast<off_t>(part.size)) == 0);
    return ImageFile(std::move(file));
}

} // namespace join::platform::hdiutil
