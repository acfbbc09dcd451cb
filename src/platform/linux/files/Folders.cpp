#include "platform/linux/files/Folders.h"

#include "platform/linux/files/Descriptor.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <unistd.h>

namespace join::platform {

std::string normalised(std::string_view absolutePath) {
    std::string path;
    while (!absolutePath.empty()) {
        const auto end = absolutePath.find('/');
        const auto component = absolutePath.substr(0, end);
        absolutePath.remove_prefix(end == std::string_view::npos ? absolutePath.size() : end + 1);
        if (component == "..")
            path.erase(path.empty() ? 0 : path.rfind('/'));
        else if (!component.empty() && component != ".")
            path.append("/").append(component);
    }
    return path.empty() ? "/" : path;
}

std::string parentOf(const std::string& path) {
    const auto separator = path.rfind('/');
    return separator == 0 ? "/" : path.substr(0, separator);
}

std::string nameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

bool makeFolders(const std::string& path, mode_t mode) {
    if (::mkdir(path.c_str(), mode) == 0)
        return true;
    if (errno == ENOENT && path != "/" && makeFolders(parentOf(path), mode) &&
        ::mkdir(path.c_str(), mode) == 0)
        return true;
    const int reason = errno;
    struct stat found {};
    if (::stat(path.c_str(), &found) == 0 && S_ISDIR(found.st_mode))
        return true;
    errno = reason;
    return false;
}

bool isSameFolder(const std::string& one, const std::string& other) {
    struct stat first {};
    struct stat second {};
    return ::stat(one.c_str(), &first) == 0 && ::stat(other.c_str(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino && S_ISDIR(first.st_mode);
}

bool isPrivate(const struct stat& found) {
    return S_ISDIR(found.st_mode) && found.st_uid == ::geteuid() &&
           (found.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

std::optional<std::vector<std::string>> namesIn(int folder) {
    // A descriptor of its own, since reading moves its position and closedir closes it.
    Descriptor reading = openForReading(folder, ".", O_DIRECTORY);
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(reading ? ::fdopendir(reading.get()) : nullptr,
                                                     ::closedir);
    if (!stream)
        return std::nullopt;
    reading.release();
    std::vector<std::string> names;
    for (errno = 0; const dirent* entry = ::readdir(stream.get()); errno = 0) {
        const std::string_view name(static_cast<const char*>(entry->d_name));
        if (name != "." && name != "..")
            names.emplace_back(name);
    }
    if (errno != 0)
        return std::nullopt;
    return names;
}

} // namespace join::platform
