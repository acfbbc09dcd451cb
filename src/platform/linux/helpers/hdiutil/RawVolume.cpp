#include "platform/linux/helpers/hdiutil/RawVolume.h"

#include "platform/Exception.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace join::platform::hdiutil {

namespace {

[[noreturn]] void raise() {
    throw Exception(std::string("the volume cannot be unpacked: ") + std::strerror(errno));
}

bool isZero(std::string_view bytes) {
    return bytes.front() == '\0' && std::memcmp(bytes.data(), bytes.data() + 1, bytes.size() - 1) == 0;
}

} // namespace

RawVolume::RawVolume(const std::string& folder) {
    const std::string path = folder + "/raw";
    file_ = Descriptor(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!file_ || ::unlink(path.c_str()) != 0)
        raise();
}

void RawVolume::fill(const ByteSource& source, const Extent& part, std::uint64_t room) {
    std::vector<char> buffer(std::size_t{1} << 18);
    const std::uint64_t end = part.offset + part.size;
    std::uint64_t place = 0;
    while (const std::size_t count = source(buffer.data(), buffer.size())) {
        const std::uint64_t first = std::clamp(part.offset, place, place + count);
        const std::uint64_t last = std::clamp(end, place, place + count);
        const std::string_view bytes(buffer.data() + (first - place), last - first);
        place += count;
        if (bytes.empty())
            continue;
        if (isZero(bytes)) {
            if (::lseek(file_.get(), static_cast<off_t>(bytes.size()), SEEK_CUR) < 0)
                raise();
            continue;
        }
        if (bytes.size() > room)
            throw Exception("the disk has no room for the volume");
        room -= bytes.size();
        if (!writeAll(file_.get(), bytes))
            raise();
    }
    if (place < end)
        throw Exception("the image is damaged: its volume is cut off");
    if (::ftruncate(file_.get(), static_cast<off_t>(part.size)) != 0)
        raise();
}

void RawVolume::patch(std::uint64_t place, char byte) {
    if (::pwrite(file_.get(), &byte, 1, static_cast<off_t>(place)) != 1)
        raise();
}

} // namespace join::platform::hdiutil
