#include "platform/linux/files/Descriptor.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace join::platform {

bool Descriptor::close() {
    // Linux has released the number even when it reports EINTR.
    return number_ < 0 || ::close(release()) == 0 || errno == EINTR;
}

Descriptor openForReading(int folder, const char* path, int flags) {
    return Descriptor(::openat(folder, path, O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY | flags));
}

ssize_t readSome(int descriptor, void* buffer, std::size_t size) {
    ssize_t count = -1;
    do
        count = ::read(descriptor, buffer, size);
    while (count < 0 && errno == EINTR);
    return count;
}

std::optional<std::string> readAll(int descriptor, std::size_t maximum) {
    std::string bytes;
    std::array<char, 16384> buffer{};
    for (;;) {
        const ssize_t count = readSome(descriptor, buffer.data(), buffer.size());
        if (count == 0)
            return bytes;
        if (count < 0 || static_cast<std::size_t>(count) > maximum - bytes.size())
            return std::nullopt;
        bytes.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

std::optional<std::string> readFile(const std::string& path, std::size_t maximum, int flags) {
    const Descriptor file = openForReading(AT_FDCWD, path.c_str(), flags);
    return file ? readAll(file.get(), maximum) : std::nullopt;
}

bool writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(count));
        else if (errno != EINTR)
            return false;
    }
    return true;
}

void startFlush(int descriptor, std::size_t written) {
    constexpr off_t part = off_t{8} << 20;
    const off_t end = ::lseek(descriptor, 0, SEEK_CUR);
    if (end / part != (end - static_cast<off_t>(written)) / part)
        ::sync_file_range(descriptor, 0, 0, SYNC_FILE_RANGE_WRITE);
}

bool hasFlushed(int returned) {
    return returned == 0 || errno == EINVAL || errno == EOPNOTSUPP || errno == ENOSYS;
}

} // namespace join::platform
