#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace join::platform {

/// The bytes of a whole file, read-only, for as long as this object lives. Pages are read when they are
/// accessed.
using MappedFile = std::shared_ptr<const std::span<const std::byte>>;

/// A regular file open for reading. It stays readable when its name is given to another file.
class ReadableFile {
public:
    virtual ~ReadableFile() = default;

    /// Returns the size in bytes at the time the file was opened.
    virtual std::uint64_t size() const = 0;

    /// Fills the buffer with the bytes from the offset on. Returns how many it got; 0 at the end of the file
    /// or if it cannot be read. Only one thread at a time, but any.
    virtual std::size_t read(std::uint64_t offset, std::span<char> buffer) const = 0;
};

/// Files and folders by absolute path. Nothing throws: a failure is a result. Whatever it creates appears
/// whole under its name or not at all. Any thread.
class FileManager {
public:
    virtual ~FileManager() = default;

    /// Returns whether a file or folder exists there. Links are followed.
    virtual bool exists(const std::string& path) = 0;

    /// Creates a folder and its missing parents, closed to other users. One that exists and belongs to the user
    /// is closed to them as well. Returns true if the folder exists afterwards.
    virtual bool createFolder(const std::string& path) = 0;

    /// Copies a file or a whole folder tree, with times, links, and modes except that only the owner may
    /// write. Fails if anything exists at the target, and on devices, pipes and sockets.
    virtual bool copy(const std::string& source, const std::string& target) = 0;

    /// Copies like copy(), and is on the disk before it has its name: a power cut leaves it whole or absent.
    virtual bool install(const std::string& source, const std::string& target) = 0;

    /// Installs like install(), from the volume of a disk image that is detached afterwards: files may be shared
    /// with it rather than copied.
    virtual bool installFromVolume(const std::string& source, const std::string& target) = 0;

    /// Installs like install(), but replaces whatever exists at the target, which is kept if that fails.
    virtual bool replace(const std::string& source, const std::string& target) = 0;

    /// Removes a file or a whole folder tree; links are removed, not followed. Returns true if something
    /// existed there and nothing does afterwards. On a failure, a folder is left as it was.
    virtual bool remove(const std::string& path) = 0;

    /// Returns the contents of a regular file of at most maximumReadSize bytes, or nothing if it is missing,
    /// not a regular file, too large, or unreadable.
    virtual std::optional<std::string> read(const std::string& path) = 0;

    /// Creates a file with these bytes and default attributes, replacing an older file.
    virtual bool create(const std::string& path, std::string_view contents) = 0;

    /// Empties a file in place.
    virtual bool truncate(const std::string& path) = 0;

    /// Maps a regular file. Returns nullptr if that fails, as it does for an empty or missing file.
    virtual MappedFile map(const std::string& path) = 0;

    /// Opens a regular file of any size. Returns nullptr if it is missing, not a regular file, or unreadable.
    virtual std::unique_ptr<ReadableFile> open(const std::string& path) = 0;
};

/// Files that are read whole are normally some hundred bytes long.
inline constexpr std::size_t maximumReadSize = std::size_t{16} << 20;

} // namespace join::platform
