#include "platform/linux/bundles/LinuxBundles.h"

#include "platform/Exception.h"
#include "platform/linux/files/Folders.h"

#include <filesystem>
#include <string_view>
#include <system_error>
#include <unistd.h>

namespace join::platform {

namespace {

constexpr std::string_view executablesFolder = "/Contents/MacOS/";

/// Returns whether the file of that name really lies in the bundle, and has bytes. Links to the bundle itself
/// do not matter.
bool holdsExecutable(const std::string& realBundlePath, const std::string& name) {
    std::error_code failed;
    const auto bundle = std::filesystem::canonical(realBundlePath, failed);
    if (failed)
        return false;
    const std::string expected = bundle.string().append(executablesFolder).append(name);
    const auto executable = std::filesystem::canonical(expected, failed);
    return !failed && executable == expected && std::filesystem::is_regular_file(executable, failed) &&
           std::filesystem::file_size(executable, failed) > 0 && ::access(executable.c_str(), X_OK) == 0;
}

} // namespace

std::optional<Value> LinuxBundles::infoDictionary(const std::string& bundlePath) {
    const auto bytes = files_.read(bundlePath + "/Contents/Info.plist");
    auto list = bytes ? lists_.parse(*bytes) : std::nullopt;
    return list && list->dictionary() ? list : std::nullopt;
}

std::string LinuxBundles::mainExecutable(const std::string& bundlePath) {
    const auto info = infoDictionary(bundlePath);
    if (!info)
        throw Exception("There is no application bundle at " + bundlePath);
    const Value* named = info->member("CFBundleExecutable");
    const std::string* name = named ? named->text() : nullptr;
    if (!name)
        throw Exception("The bundle " + bundlePath + " names no executable");
    if (name->find('/') != std::string::npos || !holdsExecutable(root_.toReal(bundlePath), *name))
        throw Exception("The bundle " + bundlePath + " does not hold the executable that it names: " + *name);
    return normalised(bundlePath).append(executablesFolder).append(*name);
}

} // namespace join::platform
