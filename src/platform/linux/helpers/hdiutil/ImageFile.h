#pragma once

#include "platform/linux/files/Descriptor.h"
#include "platform/linux/helpers/hdiutil/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace join::platform::hdiutil {

/// An image, opened only once, so that the file examined is the file mounted.
class ImageFile : public RandomAccess {
public:
    /// Both throw Exception unless it is a readable regular file.
    explicit ImageFile(const std::string& path);
    explicit ImageFile(Descriptor file);

    /// The descriptor remains this object's.
    int descriptor() const { return file_.get(); }

    std::uint64_t size() const override { return size_; }
    std::string read(std::uint64_t offset, std::size_t size) const override;

    /// Empties an unpacked image, which is not needed any more. To close it is not enough: the system keeps a file
    /// that a program was confined to for a while, and would write it to the disk. An image that was opened by
    /// its path was opened for reading, and stays as it is.
    void discard() const;

private:
    Descriptor file_;
    std::uint64_t size_ = 0;
};

/// An image that is being unpacked into an unnamed file, which is deleted with it.
class NewImage {
public:
    /// Creates the file in the folder, which must be private. Throws Exception.
    explicit NewImage(const std::string& folder);

    /// Writes bytes at a place, unless they are zeros, which take no disk space: every place is written once.
    /// Returns how many it has written. May be called by several threads. Throws Exception.
    std::size_t write(std::uint64_t place, std::string_view bytes) const;

    /// Returns the image, which takes over the file. Throws Exception.
    ImageFile finish(std::uint64_t size);

private:
    Descriptor file_;
};

/// Reads the source to its end and returns one part of it, in an unnamed file in the folder. Throws Exception
/// if the source ends within the part, or if the part takes more than room bytes of disk space.
ImageFile keepPart(const ByteSource& source, const Extent& part, const std::string& folder,
                   std::uint64_t room);

} // namespace join::platform::hdiutil
