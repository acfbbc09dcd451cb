#pragma once

#include <httplib.h>

#include <cstddef>
#include <string>
#include <vector>

namespace join::tools {

/// A file on its way to one client, read block by block.
class ImageFile {
public:
    /// Throws std::runtime_error if it cannot be read.
    explicit ImageFile(const std::string& path);
    ~ImageFile();

    ImageFile(const ImageFile&) = delete;
    ImageFile& operator=(const ImageFile&) = delete;

    /// In bytes, when it was opened.
    std::size_t size() const { return size_; }

    /// Sends some of the bytes from the offset on, at most the length; false if the client has gone or the
    /// file has become shorter.
    bool send(httplib::DataSink& sink, std::size_t offset, std::size_t length);

private:
    int descriptor_;
    std::size_t size_ = 0;
    std::vector<char> block_;
};

} // namespace join::tools
