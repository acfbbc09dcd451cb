#pragma once

#include "platform/linux/files/Descriptor.h"
#include "platform/linux/helpers/hdiutil/Bytes.h"

#include <cstdint>
#include <string>

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

private:
    Descriptor file_;
    std::uint64_t size_ = 0;
};

/// Reads the source to its end and keeps one part of it in an unnamed file, which is deleted with the
/// returned image. Zeros take no disk space. The file is created in the folder, which must be private. Throws
/// Exception if the source ends within the part, or if the part takes more than room bytes of disk space.
ImageFile keepPart(const ByteSource& source, const Extent& part, const std::string& folder,
                   std::uint64_t room);

} // namespace join::platform::hdiutil
