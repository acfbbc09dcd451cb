#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <utility>

namespace join::platform {

/// Owns a file descriptor, or none (-1).
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() { close(); }

    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }

    explicit operator bool() const { return number_ >= 0; }
    int get() const { return number_; }

    /// Gives the descriptor away.
    int release() { return std::exchange(number_, -1); }

    /// False when the file system only now reports that what was written did not get there.
    bool close();

private:
    int number_ = -1;
};

/// Opens for reading, below a folder's descriptor or AT_FDCWD; more flags may be given. Neither a pipe that
/// nobody writes to nor a terminal can hold it up or get hold of us.
Descriptor openForReading(int folder, const char* path, int flags = 0);

/// Like read(2), but goes on after a signal.
ssize_t readSome(int descriptor, void* buffer, std::size_t size);

/// Everything up to the end; nothing when that is more than the maximum, or on an error.
std::optional<std::string> readAll(int descriptor, std::size_t maximum);

/// The same of the file at a path; more flags may be given.
std::optional<std::string> readFile(const std::string& path, std::size_t maximum, int flags = 0);

/// Writes all of it; false on an error, with some of it perhaps written.
bool writeAll(int descriptor, std::string_view bytes);

} // namespace join::platform
