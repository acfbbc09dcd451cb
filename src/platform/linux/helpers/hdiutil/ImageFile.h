#pragma once

#include "platform/linux/files/Descriptor.h"
#include "platform/linux/helpers/hdiutil/Bytes.h"

#include <string>
#include <utility>

namespace join::platform::hdiutil {

/// An image, opened once: what is looked at is what is mounted.
class ImageFile : public RandomAccess {
public:
    /// These throw Exception unless it is a regular file that can be read.
    explicit ImageFile(const std::string& path);
    explicit ImageFile(Descriptor file);

    ImageFile(ImageFile&& other) noexcept : file_(std::move(other.file_)), size_(other.size_) {}
    ImageFile& operator=(ImageFile&& other) noexcept {
        file_ = std::move(other.file_);
        size_ = other.size_;
        return *this;
    }

    int descriptor() const { return file_.get(); }

    std::uint64_t size() const override { return size_; }
    std::string read(std::uint64_t offset, std::size_t size) const override;

private:
    Descriptor file_;
    std::uint64_t size_ = 0;
};

} // namespace join::platform::hdiutil
