#include "platform/linux/files/SystemRoot.h"

#include "platform/linux/files/Folders.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace join::platform {

namespace {

bool isAtOrBelow(std::string_view path, std::string_view folder) {
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

bool isOfTheSystem(std::string_view path) {
    static constexpr std::array<std::string_view, 3> folders{"/Applications", "/Volumes", "/System"};
    return std::ranges::any_of(folders, [&](std::string_view folder) { return isAtOrBelow(path, folder); });
}

} // namespace

SystemRoot::SystemRoot(const std::string& path) : path_(normalised(path)), resolved_(withoutLinks(path_)) {}

std::string SystemRoot::toReal(const std::string& systemPath) const {
    if (!systemPath.starts_with('/'))
        return systemPath;
    std::string path = normalised(systemPath);
    return isOfTheSystem(path) ? path_ + path : path;
}

std::string SystemRoot::toSystem(const std::string& realPath) const {
    if (!realPath.starts_with('/'))
        return realPath;
    std::string path = normalised(realPath);
    for (const std::string& root : {path_, resolved_}) {
        if (isAtOrBelow(path, root) && isOfTheSystem(path.substr(root.size())))
            return path.substr(root.size());
    }
    return path;
}

std::string defaultSystemRoot(const std::string& home) {
    return absoluteFromEnvironment("XDG_DATA_HOME").value_or(home + "/.local/share") + "/tavojoin/root";
}

} // namespace join::platform
