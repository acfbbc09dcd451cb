#include "platform/linux/SchemeRegistration.h"

#include "platform/Exception.h"
#include "platform/linux/Descriptor.h"
#include "platform/linux/DesktopEntry.h"
#include "platform/linux/Environment.h"
#include "platform/linux/Folders.h"
#include "platform/linux/LinuxPaths.h"
#include "platform/linux/MimeAppsList.h"
#include "platform/linux/StagedFile.h"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace join::platform {

namespace {

constexpr std::size_t maximumSize = 1 << 20; ///< of a file that is read; they are a few KiB long
constexpr mode_t privateMode = S_IRWXU;
constexpr mode_t readableMode = S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;

/// An empty text when it cannot be read.
std::string textOf(const std::string& path, int flags = 0) {
    const Descriptor file = openForReading(AT_FDCWD, path.c_str(), flags);
    return file ? readAll(file.get(), maximumSize).value_or("") : "";
}

bool isExecutable(const std::string& path) {
    struct stat found {};
    return ::stat(path.c_str(), &found) == 0 && S_ISREG(found.st_mode) && ::access(path.c_str(), X_OK) == 0;
}

[[noreturn]] void raise(const std::string& path, const char* reason) {
    throw Exception("The desktop entry " + path + " cannot be written: " + reason);
}

void writeEntry(const std::string& path, const std::string& text) {
    StagedFile file(path);
    if (!file.open() || !file.write(text) || !file.commit())
        raise(path, std::strerror(errno));
    if (const Descriptor written = openForReading(AT_FDCWD, path.c_str(), O_NOFOLLOW))
        ::fchmod(written.get(), readableMode);
}

/// Only a file of ours is written over; a link or a folder was put there by somebody.
void ensureEntry(const std::string& path, const std::string& text) {
    struct stat found {};
    if (::lstat(path.c_str(), &found) == 0) {
        if (!S_ISREG(found.st_mode))
            raise(path, "something else has its name");
        if (textOf(path, O_NOFOLLOW) == text)
            return;
    }
    writeEntry(path, text);
}

} // namespace

SchemeRegistration::SchemeRegistration(SystemRoot root, std::string runningBundle, Log& log,
                                       StartHelper startHelper)
    : root_(std::move(root)), runningBundle_(std::move(runningBundle)), log_(log),
      startHelper_(std::move(startHelper)) {}

void SchemeRegistration::ensure(const std::string& scheme, const std::string& bundleIdentifier) {
    try {
        tryToEnsure(scheme, bundleIdentifier);
    } catch (const std::exception& exception) {
        if (std::exchange(lastFailure_, exception.what()) != exception.what())
            log_.write(lastFailure_);
    }
}

void SchemeRegistration::tryToEnsure(const std::string& scheme, const std::string& bundleIdentifier) {
    if (!isPlainName(scheme) || !isPlainName(bundleIdentifier))
        throw Exception("There can be no desktop entry " + bundleIdentifier + " for " + scheme);
    const std::string home = LinuxPaths().home();
    const std::string data = absoluteFromEnvironment("XDG_DATA_HOME").value_or(home + "/.local/share");
    const std::string config = absoluteFromEnvironment("XDG_CONFIG_HOME").value_or(home + "/.config");
    const std::string applications = normalised(data + "/applications");
    const std::string entryId = bundleIdentifier + ".desktop";

    const std::string text = entryText(bundleIdentifier);
    if (!makeFolders(applications, privateMode))
        raise(applications + "/" + entryId, "its folder cannot be made");
    ensureEntry(applications + "/" + entryId, text);

    const std::string type = "x-scheme-handler/" + scheme;
    const std::vector<std::string> arguments{scheme, entryId, applications};
    if (started_ == arguments || (isFirstDefault(textOf(config + "/mimeapps.list"), type, entryId) &&
                                  isInMimeCache(textOf(applications + "/mimeinfo.cache"), type, entryId)))
        return;
    startHelper_(arguments);
    started_ = arguments;
}

std::string SchemeRegistration::entryText(const std::string& bundleIdentifier) const {
    constexpr const char* executable = "/Contents/MacOS/Join";
    const std::string installed = root_.toReal("/Applications/Join.app");
    const std::string bundle = isExecutable(installed + executable) ? installed : runningBundle_;
    const std::string icon = bundle + "/Contents/Resources/Join.svg";
    const auto text = desktopEntryText({.executable = bundle + executable,
                                        .icon = ::access(icon.c_str(), R_OK) == 0 ? icon : bundleIdentifier});
    if (!text)
        throw Exception("No desktop entry can name the program " + bundle + executable);
    return *text;
}

} // namespace join::platform
