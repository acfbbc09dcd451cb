#include "platform/linux/bundles/RunningBundle.h"

#include <system_error>

namespace join::platform {

std::filesystem::path bundleOf(const std::filesystem::path& executable) {
    const std::filesystem::path folder = executable.parent_path();
    const bool isInBundle = folder.filename() == "MacOS" && folder.parent_path().filename() == "Contents";
    return isInBundle ? folder.parent_path().parent_path() : folder;
}

std::filesystem::path runningExecutable() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error);
}

} // namespace join::platform
