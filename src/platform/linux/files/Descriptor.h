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

    /// Returns the descriptor and gives up its ownership.
    int release() { return std::exchange(number_, -1); }

    /// Returns false if the file system reports only now that written data was lost.
    bool close();

private:
    int number_ = -1;
};

/// Opens for reading, relative to a folder's descriptor or AT_FDCWD, with optional further flags. Does not
/// block on a pipe without a writer, and a terminal does not become the controlling one.
Descriptor openForReading(int folder, const char* path, int flags = 0);

/// Like read(2), but continues after a signal.
ssize_t readSome(int descriptor, void* buffer, std::size_t size);

/// Returns everything up to the end, or nothing on an error or if that is more than maximum bytes.
std::optional<std::string> readAll(int descriptor, std::size_t maximum);

/// Reads the file at a path in the same way, opened with optional further flags.
std::optional<std::string> readFile(const std::string& path, std::size_t maximum, int flags = 0);

/// Writes all bytes. Returns false on an error, with some perhaps written.
bool writeAll(int descriptor, std::string_view bytes);

/// To be called after so many bytes were written to a file that is to stay: the system begins to write it to the
/// disk each time that some megabytes are complete, so that a later flush has less to wait for.
void startFlush(int descriptor, std::size_t written);

/// Returns whether a call like fsync(2), which has returned that, has reached the disk, or the file system knows
/// no such call.
bool hasFlushed(int returned);

} // namespace join::platform
