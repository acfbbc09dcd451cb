#include "platform/linux/desktop/SchemeRegistration.h"

#include "platform/linux/files/Descriptor.h"
#include "platform/linux/files/Folders.h"
#include "platform/linux/files/LinuxPaths.h"

#include <cstddef>
#include <exception>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace join::platform {

namespace {

constexpr std::size_t maximumMark = std::size_t{64} << 10; ///< in bytes; it contains a path and some numbers

/// Returns a text that changes when the file is replaced or written to.
std::string identityOf(const std::string& path) {
    struct stat found {};
    if (::stat(path.c_str(), &found) != 0)
        return "-";
    std::string identity;
    for (const auto number :
         {static_cast<long long>(found.st_dev), static_cast<long long>(found.st_ino),
          static_cast<long long>(found.st_size), static_cast<long long>(found.st_mtim.tv_sec),
          static_cast<long long>(found.st_mtim.tv_nsec)})
        identity += std::to_string(number) + ' ';
    return identity;
}

} // namespace

std::string bundleForLaunchUrls(const SystemRoot& root, const std::string& runningBundle) {
    const std::string installed = root.toReal("/Applications/Join.app");
    const std::string executable = installed + "/Contents/MacOS/Join";
    struct stat found {};
    const bool canBeStarted = ::stat(executable.c_str(), &found) == 0 && S_ISREG(found.st_mode) &&
                              found.st_size > 0 && ::access(executable.c_str(), X_OK) == 0;
    return canBeStarted ? installed : runningBundle;
}

RegistrationFiles::RegistrationFiles(const std::string& bundleIdentifier) {
    const std::string home = LinuxPaths().home();
    const std::string data = absoluteFromEnvironment("XDG_DATA_HOME").value_or(home + "/.local/share");
    const std::string config = absoluteFromEnvironment("XDG_CONFIG_HOME").value_or(home + "/.config");
    entry = normalised(data + "/applications") + "/" + bundleIdentifier + ".desktop";
    defaults = config + "/mimeapps.list";
    mark = data + "/tavojoin/registered";
}

std::string registrationFacts(const RegistrationFiles& files, const std::string& bundle) {
    return bundle + "\n" + identityOf(files.entry) + "\n" + identityOf(files.defaults) + "\n";
}

SchemeRegistration::SchemeRegistration(SystemRoot root, std::string runningBundle, Log& log, Tasks& tasks)
    : root_(std::move(root)), runningBundle_(std::move(runningBundle)), log_(log), tasks_(tasks) {}

void SchemeRegistration::ensure(const std::string& scheme, const std::string& bundleIdentifier) {
    try {
        const RegistrationFiles files(bundleIdentifier);
        const std::string bundle = bundleForLaunchUrls(root_, runningBundle_);
        const std::string facts = registrationFacts(files, bundle);
        if (facts == startedFor_ || readFile(files.mark, maximumMark, O_NOFOLLOW) == facts)
            return;
        tasks_.start({.path = "register-scheme",
                      .arguments = {scheme, bundleIdentifier, bundle},
                      .workingDirectory = "/"});
        startedFor_ = facts;
    } catch (const std::exception& exception) {
        if (std::exchange(lastFailure_, exception.what()) != exception.what())
            log_.write(lastFailure_);
    }
}

} // namespace join::platform
