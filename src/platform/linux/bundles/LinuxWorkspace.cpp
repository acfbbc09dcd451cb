#include "platform/linux/bundles/LinuxWorkspace.h"

#include "platform/linux/bundles/BootMark.h"
#include "platform/linux/bundles/MountInfo.h"
#include "platform/linux/bundles/ProcessTable.h"
#include "platform/linux/files/Folders.h"
#include "platform/linux/files/LinuxPaths.h"

#include <algorithm>
#include <exception>
#include <fcntl.h>
#include <map>
#include <unistd.h>
#include <utility>

namespace join::platform {

namespace {

constexpr const char* imageVolumes = "/Volumes";

/// Returns whether a folder stands for the volume of a disk image. Hidden folders are still being filled.
bool isImageVolume(const std::string& realFolder, const std::string& name) {
    return !name.starts_with('.') && isFolder(realFolder + "/" + name);
}

} // namespace

LinuxWorkspace::LinuxWorkspace(const SystemRoot& root, Bundles& bundles, Log& log, Launcher launchDetached)
    : root_(root), bundles_(bundles), log_(log), launchDetached_(std::move(launchDetached)) {}

bool LinuxWorkspace::launchApplication(const std::string& bundlePath,
                                       const std::vector<std::string>& arguments) {
    try {
        const std::string executable = root_.toReal(bundles_.mainExecutable(bundlePath));
        if (launchDetached_({.path = executable, .arguments = arguments, .workingDirectory = "/"}))
            return true;
        log_.write("Cannot launch " + bundlePath + ": " + executable + " did not start");
    } catch (const std::exception& error) {
        log_.write("Cannot launch " + bundlePath + ": " + error.what());
    }
    return false;
}

std::vector<std::string> LinuxWorkspace::runningApplications(const std::string& bundleIdentifier) {
    std::map<std::string, std::string> identifiers; // by bundle: many processes may run from one
    std::vector<std::string> running;
    for (const Process& process : ownProcesses()) {
        const std::string bundle = bundleRunBy(process);
        if (bundle.empty())
            continue;
        if (!identifiers.contains(bundle))
            identifiers[bundle] = identifierOf(bundle);
        if (!bundleIdentifier.empty() && identifiers[bundle] == bundleIdentifier)
            running.push_back(bundleIdentifier);
    }
    return running;
}

std::string LinuxWorkspace::identifierOf(const std::string& realBundlePath) {
    const auto information = bundles_.infoDictionary(root_.toSystem(realBundlePath));
    const Value* identifier = information ? information->member("CFBundleIdentifier") : nullptr;
    const std::string* text = identifier ? identifier->text() : nullptr;
    return text ? *text : std::string();
}

std::vector<std::string> LinuxWorkspace::mountedLocalVolumePaths() {
    std::vector<std::string> paths;
    const std::string folder = root_.toReal(imageVolumes);
    if (endVolumesOfEarlierBoots(root_))
        for (const std::string& name : namesIn(AT_FDCWD, folder.c_str()).value_or(std::vector<std::string>()))
            if (isImageVolume(folder, name))
                paths.push_back(std::string(imageVolumes) + "/" + name);
    std::ranges::sort(paths);
    for (const Mount& mount : localMounts())
        if (std::ranges::find(paths, mount.path) == paths.end())
            paths.push_back(mount.path);
    return paths;
}

FileSystemInfo LinuxWorkspace::fileSystemInfo(const std::string& volumePath) {
    if (!volumePath.starts_with('/'))
        return {};
    const std::string path = normalised(volumePath);
    if (parentOf(path) == imageVolumes && isImageVolume(root_.toReal(imageVolumes), nameOf(path)))
        return {.known = true,
                .removable = true,
                .writable = ::access(root_.toReal(path).c_str(), W_OK) == 0,
                .unmountable = true,
                .description = "opened disk image",
                .type = "disk image"};

    const auto mounts = localMounts();
    const auto topmost =
        std::find_if(mounts.rbegin(), mounts.rend(), [&](const Mount& mount) { return mount.path == path; });
    if (topmost == mounts.rend())
        return {};
    return {.known = true,
            .removable = isRemovable(*topmost),
            .writable = topmost->writable,
            .unmountable = isUnmountable(path, withoutLinks(LinuxPaths().home())),
            .description = topmost->source,
            .type = topmost->type};
}

} // namespace join::platform
