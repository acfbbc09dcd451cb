#pragma once

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>

namespace join::tools {

/// A private folder in another one. Destroying this object removes it with everything in it.
class ScratchFolder {
public:
    /// Throws std::system_error.
    explicit ScratchFolder(const std::filesystem::path& parent = std::filesystem::temp_directory_path()) {
        std::string path = parent / "images-XXXXXX";
        if (!::mkdtemp(path.data()))
            throw std::system_error(errno, std::generic_category(), path);
        path_ = path;
    }

    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

    /// Writes a file and its missing parent folders. Returns its path.
    std::filesystem::path write(const std::filesystem::path& name, std::string_view bytes) const {
        std::filesystem::create_directories((path_ / name).parent_path());
        std::ofstream(path_ / name, std::ios::binary) << bytes;
        return path_ / name;
    }

private:
    std::filesystem::path path_;
};

} // namespace join::tools
