#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace join::platform {

/// A whole file in memory, read only, as long as this object lives. Pages are read when they are touched.
class MappedFile {
public:
    virtual ~MappedFile() = default;
    virtual std::span<const std::byte> bytes() const = 0;
};

/// A regular file that is open for reading, and stays so when its name goes to another file.
class ReadableFile {
public:
    virtual ~ReadableFile() = default;

    /// In bytes, when it was opened.
    virtual std::uint64_t size() const = 0;

    /// Fills the buffer with the bytes from there on. Returns how many it got; 0 at the file's end or when it
    /// cannot be read. Any one thread at a time.
    virtual std::size_t read(std::uint64_t offset, std::span<char> buffer) const = 0;
};

/// Files and folders by absolute path. Nothing throws: a failure is a result. What it makes appears whole
/// under its name or not at all. Any thread.
class FileManager {
public:
    virtual ~FileManager() = default;

    /// Whether a file or folder exists there; a link counts as what it leads to.
    virtual bool exists(const std::string& path) = 0;

    /// Makes a folder and its missing parents. True when it is there afterwards.
    virtual bool createFolder(const std::string& path) = 0;

    /// Copies a file or a whole folder tree, with modes, times and links. Fails when anything stands at the
    /// target, and on devices, pipes and sockets.
    virtual bool copy(const std::string& source, const std::string& target) = 0;

    /// Copies as copy() does, in place of whatever stands at the target, which stays when that fails.
    virtual bool replace(const std::string& source, const std::string& target) = 0;

    /// Removes a file or a whole folder tree; links are removed, not followed. True when something was there
    /// and nothing is any more. What fails of a folder leaves it as it was.
    virtual bool remove(const std::string& path) = 0;

    /// The bytes of a regular file of at most maximumReadSize bytes; nothing when it is missing, another kind
    /// of thing, larger, or unreadable.
    virtual std::optional<std::string> read(const std::string& path) = 0;

    /// Makes a file with these bytes and default attributes, in place of an older file.
    virtual bool create(const std::string& path, std::string_view contents) = 0;

    /// Empties a file in place.
    virtual bool truncate(const std::string& path) = 0;

    /// Maps a regular file; nullptr when that cannot be done, as for an empty or missing one.
    virtual std::unique_ptr<MappedFile> map(const std::string& path) = 0;

    /// Opens a regular file of any size; nullptr when it is missing, another kind of thing, or unreadable.
    virtual std::unique_ptr<ReadableFile> open(const std::string& path) = 0;
};

/// The files that are read whole are some hundred bytes long.
inline constexpr std::size_t maximumReadSize = std::size_t{16} << 20;

} // namespace join::platform
