#include "platform/linux/helpers/register-scheme/Registration.h"

#include "platform/Exception.h"
#include "platform/linux/desktop/SchemeRegistration.h"
#include "platform/linux/files/Descriptor.h"
#include "platform/linux/files/Folders.h"
#include "platform/linux/files/LinuxPaths.h"
#include "platform/linux/files/StagedFile.h"
#include "platform/linux/helpers/register-scheme/DesktopEntry.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <gio/gio.h>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace join::platform {

namespace {

constexpr std::size_t maximumEntry = 1 << 20;
constexpr mode_t privateFile = S_IRUSR | S_IWUSR;
constexpr mode_t readableFile = S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;

[[noreturn]] void raise(const std::string& path, const char* reason) {
    throw Exception(path + " cannot be written: " + reason);
}

/// Makes GIO use the same folders of the user as the rest of this program.
void setEnvironment() {
    ::setenv("HOME", LinuxPaths().home().c_str(), 1);
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME"})
        if (!absoluteFromEnvironment(name))
            ::unsetenv(name);
    ::setenv("GIO_USE_VFS", "local", 1); // no service of the session is needed or started
}

/// Opens and locks the mark. Returns an empty descriptor if another process has locked it.
Descriptor lockMark(const std::string& path) {
    makeFolders(parentOf(path));
    constexpr int flags = O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
    Descriptor mark(::open(path.c_str(), flags, privateFile));
    if (mark && ::flock(mark.get(), LOCK_EX | LOCK_NB) == 0)
        return mark;
    if (mark && errno == EWOULDBLOCK)
        return {};
    throw Exception(path + " cannot be locked: " + std::strerror(errno));
}

std::string entryText(const std::string& bundle, const std::string& bundleIdentifier) {
    const std::string executable = bundle + "/Contents/MacOS/Join";
    const std::string icon = bundle + "/Contents/Resources/Join.svg";
    const bool hasIcon = ::access(icon.c_str(), R_OK) == 0;
    const auto text = desktopEntryText(executable, hasIcon ? icon : bundleIdentifier);
    if (!text)
        throw Exception("no desktop entry can name the program " + executable);
    return *text;
}

void write(const std::string& path, std::string_view text, mode_t mode) {
    if (!makeFolders(parentOf(path)) || !writeStaged(path, text, mode))
        raise(path, std::strerror(errno));
}

/// Overwrites only a regular file: a link or a folder was put there on purpose.
void ensureEntry(const std::string& path, const std::string& text) {
    struct stat found {};
    if (::lstat(path.c_str(), &found) == 0) {
        if (!S_ISREG(found.st_mode))
            raise(path, "something else has its name");
        if (readFile(path, maximumEntry, O_NOFOLLOW) == text)
            return;
    }
    write(path, text, readableFile);
}

/// Makes the entry the list's default for the type and leaves the rest of the list as it is. GIO's own
/// function drops comments, and all of a list that it cannot read.
void ensureDefault(const std::string& list, const std::string& type, const std::string& entryId) {
    constexpr const char* group = "Default Applications";
    constexpr auto flags =
        static_cast<GKeyFileFlags>(G_KEY_FILE_KEEP_COMMENTS | G_KEY_FILE_KEEP_TRANSLATIONS);
    g_autoptr(GKeyFile) file = g_key_file_new();
    g_autoptr(GError) error = nullptr;
    struct stat found {};
    const bool hasContents = ::stat(list.c_str(), &found) == 0 && found.st_size > 0;
    if (hasContents && !g_key_file_load_from_file(file, list.c_str(), flags, &error))
        throw Exception(list + " is left as it is: " + error->message);
    g_autofree char* value = g_key_file_get_string(file, group, type.c_str(), nullptr);
    const std::string_view entries = value ? value : "";
    if (entries.substr(0, entries.find(';')) == entryId)
        return;
    g_key_file_set_string(file, group, type.c_str(), entryId.c_str());
    g_autofree char* text = g_key_file_to_data(file, nullptr, nullptr);
    write(withoutLinks(list), text,
          privateFile); // the list may be a link into a folder that the user maintains
}

/// The desktop accepts an entry only if it can be started, and its own lists override the user's.
void requireDefault(const std::string& type, const std::string& entryId) {
    g_autoptr(GAppInfo) opened = g_app_info_get_default_for_type(type.c_str(), FALSE);
    const char* openedId = opened ? g_app_info_get_id(opened) : nullptr;
    if (openedId == nullptr || entryId != openedId)
        throw Exception("links of " + type + " go to " + (openedId != nullptr ? openedId : "no program"));
}

} // namespace

void registerScheme(const std::string& scheme, const std::string& bundleIdentifier,
                    const std::string& bundle) {
    setEnvironment();
    const RegistrationFiles files(bundleIdentifier);
    const Descriptor mark = lockMark(files.mark);
    if (!mark)
        return;
    ensureEntry(files.entry, entryText(bundle, bundleIdentifier));
    const std::string type = "x-scheme-handler/" + scheme;
    const std::string entryId = nameOf(files.entry);
    ensureDefault(files.defaults, type, entryId);
    requireDefault(type, entryId);
    if (::ftruncate(mark.get(), 0) != 0 || !writeAll(mark.get(), registrationFacts(files, bundle)))
        raise(files.mark, std::strerror(errno));
}

} // namespace join::platform
