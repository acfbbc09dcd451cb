#pragma once

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <system_error>

namespace join::test {

namespace fs = std::filesystem;

/// A fresh private folder. Destroying this object removes it with everything in it.
class TemporaryFolder {
public:
    TemporaryFolder() : path_((fs::temp_directory_path() / "join-test-XXXXXX").string()) {
        if (!::mkdtemp(path_.data()))
            throw std::system_error(errno, std::generic_category(), "mkdtemp");
    }

    ~TemporaryFolder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }

    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// Absolute, without a trailing separator.
    const std::string& path() const { return path_; }

    /// The path of something in it.
    std::string operator/(std::string_view name) const { return path_ + "/" + std::string(name); }

private:
    std::string path_;
};

/// Writes a file and its missing parent folders. Returns its path.
inline std::string writeFile(const std::string& path, std::string_view contents) {
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(contents.data(), static_cast<std::streamsize>(contents.size()));
    if (!file.flush())
        throw std::system_error(errno, std::generic_category(), path);
    return path;
}

/// Writes a file that its owner may run. Returns its path.
inline std::string writeProgram(const std::string& path, std::string_view contents = "#!/bin/sh\n") {
    fs::permissions(writeFile(path, contents), fs::perms::owner_all);
    return path;
}

/// How many entries a folder has.
inline auto countIn(const std::string& folder) { return std::distance(fs::directory_iterator(folder), {}); }

/// The bytes of a file, empty if it is missing.
inline std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace join::test
