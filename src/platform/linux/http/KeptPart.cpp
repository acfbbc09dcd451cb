#include "platform/linux/http/KeptPart.h"

#include "platform/linux/files/Folders.h"
#include "platform/linux/files/LinuxPaths.h"

#include <ctime>
#include <exception>
#include <fcntl.h>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace join::platform {

namespace {

constexpr std::time_t day = std::time_t{24} * 60 * 60;
constexpr std::size_t longestBootId = 64;                    ///< in bytes
constexpr std::size_t maximumNotes = std::size_t{256} << 10; ///< in bytes; they hold a URL

/// Opens the folder, or nothing if that is impossible.
Descriptor openFolder() try {
    const Descriptor cache = LinuxPaths().openCache();
    ::mkdirat(cache.get(), "downloads", S_IRWXU); // it may exist already; it is checked
    return openPrivateFolder(cache.get(), "downloads", O_NOFOLLOW);
} catch (const std::exception&) {
    return {};
}

/// Returns the notes on a part: URL, validator and length of the whole, the number of the part's file, and the
/// boot, each on a line of its own. After a power cut a part need not hold what was written to it.
std::string notesText(const std::string& url, const KeptPart::Whole& whole, ino_t file) {
    return url + '\n' + whole.validator + '\n' + std::to_string(whole.length) + '\n' + std::to_string(file) +
           '\n' + readFile("/proc/sys/kernel/random/boot_id", longestBootId).value_or("");
}

} // namespace

void KeptPart::removeOutdated() {
    const Descriptor folder = openFolder();
    struct stat found {};
    for (const std::string& name : namesIn(folder.get()).value_or(std::vector<std::string>()))
        if (::fstatat(folder.get(), name.c_str(), &found, AT_SYMLINK_NOFOLLOW) == 0 &&
            found.st_mtime + day < std::time(nullptr))
            ::unlinkat(folder.get(), name.c_str(), 0);
}

KeptPart::KeptPart(std::string url, const std::string& name)
    : url_(std::move(url)), name_(name + ".part"), notes_(name + ".notes") {
    removeOutdated();
    folder_ = openFolder();
    whole_ = find();
    if (!whole_)
        remove();
}

std::optional<KeptPart::Whole> KeptPart::find() {
    const Descriptor notes = openForReading(folder_.get(), notes_.c_str(), O_NOFOLLOW);
    const auto text = notes ? readAll(notes.get(), maximumNotes) : std::nullopt;
    file_ = Descriptor(
        ::openat(folder_.get(), name_.c_str(), O_RDWR | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat found {};
    if (!text || !file_ || ::fstat(file_.get(), &found) != 0 || !S_ISREG(found.st_mode))
        return std::nullopt;
    std::istringstream lines(*text);
    std::string url;
    Whole whole;
    std::getline(lines, url);
    std::getline(lines, whole.validator);
    lines >> whole.length;
    size_ = static_cast<std::uint64_t>(found.st_size);
    const bool isOurs = *text == notesText(url_, whole, found.st_ino) && size_ > 0 && size_ < whole.length;
    return isOurs ? std::optional(whole) : std::nullopt;
}

void KeptPart::keep(int file, const Whole& whole) {
    remove();
    const std::string opened = "/proc/self/fd/" + std::to_string(file);
    struct stat found {};
    if (::fstat(file, &found) != 0 ||
        ::linkat(AT_FDCWD, opened.c_str(), folder_.get(), name_.c_str(), AT_SYMLINK_FOLLOW) != 0)
        return; // such as on another file system
    const Descriptor notes(
        ::openat(folder_.get(), notes_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!notes || !writeAll(notes.get(), notesText(url_, whole, found.st_ino)))
        remove();
}

void KeptPart::remove() {
    whole_.reset();
    ::unlinkat(folder_.get(), notes_.c_str(), 0);
    ::unlinkat(folder_.get(), name_.c_str(), 0);
}

} // namespace join::platform
