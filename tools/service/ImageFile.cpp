#include "service/ImageFile.h"

#include "service/Connection.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>

namespace join::tools {
namespace {

constexpr std::size_t blockSize = std::size_t{256} << 10U;

} // namespace

ImageFile::ImageFile(const std::string& path)
    : descriptor_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
    struct stat status {};
    if (descriptor_ >= 0 && ::fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode)) {
        size_ = static_cast<std::size_t>(status.st_size);
        return;
    }
    if (descriptor_ >= 0)
        ::close(descriptor_);
    throw std::runtime_error("cannot read " + path);
}

ImageFile::~ImageFile() { ::close(descriptor_); }

bool ImageFile::send(httplib::DataSink& sink, std::size_t offset, std::size_t length) {
    block_.resize(blockSize);
    const ssize_t got =
        ::pread(descriptor_, block_.data(), std::min(length, blockSize), static_cast<off_t>(offset));
    return got > 0 && sendBytes(sink, block_.data(), static_cast<std::size_t>(got));
}

} // namespace join::tools
