#pragma once

#include "platform/linux/files/Descriptor.h"
#include "platform/linux/helpers/hdiutil/Bytes.h"

#include <cstdint>
#include <string>

namespace join::platform::hdiutil {

/// An image, opened once: what is looked at is what is mounted.
class ImageFile : public RandomAccess {
public:
    /// Both throw Exception unless it is a regular file that can be read.
    explicit ImageFile(const std::string& path);
    explicit ImageFile(Descriptor file);

    /// Stays this object's own.
    int descriptor() const { return file_.get(); }

    std::uint64_t size() const override { return size_; }
    std::string read(std::uint64_t offset, std::size_t size) const override;

private:
    Descriptor file_;
    std::uint64_t size_ = 0;
};

/// Reads the source to its end and keeps one part of it in a file that no path leads to and that goes away
/// with the image returned. Zeros take no room on the disk. The folder, a private one, is where the file is
/// made. Throws Exception when the source ends within the part, or when the part takes more than that many
/// bytes of the disk.
ImageFile keepPart(const ByteSource& source, const Extent& part, const std::string& folder,
                   std::uint64_t room);

} // namespace join::platform::hdiutil
