#include "platform/linux/helpers/hdiutil/VolumeWriter.h"

#include "platform/linux/files/Descriptor.h"
#include "platform/linux/helpers/hdiutil/Failure.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <map>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace join::platform::hdiutil {

namespace {

[[noreturn]] void raise(const std::string& path) { fail("cannot make " + path + " of the volume"); }

/// Returns the path of an entry for the calls relative to a folder.
const char* placeOf(const PlannedEntry& entry) { return entry.path.empty() ? "." : entry.path.c_str(); }

std::array<timespec, 2> timesOf(const PlannedEntry& entry) {
    const timespec modified{entry.modified.value_or(0), entry.modified ? 0 : UTIME_NOW};
    return {modified, modified};
}

class Writer {
public:
    Writer(const std::string& folder, const ByteSource& source)
        : top_(openForReading(AT_FDCWD, folder.c_str(), O_DIRECTORY | O_NOFOLLOW)), source_(source) {
        if (!top_)
            raise("the folder");
    }

    void write(const VolumePlan& plan) {
        std::map<std::string_view, const PlannedEntry*> folders; // each after its parent
        for (const PlannedEntry& entry : plan.entries)
            if (entry.kind == EntryKind::folder)
                folders.emplace(entry.path, &entry);
        for (const auto& [path, folder] : folders)
            if (!path.empty() && ::mkdirat(top_.get(), placeOf(*folder), S_IRWXU) != 0)
                raise(folder->path);
        for (const PlannedEntry& entry : plan.entries)
            takeBytes(entry);
        if (source_(buffer_.data(), 1) != 0)
            throw Exception("the image is damaged: the volume's files are longer than listed");
        for (const auto& [link, text] : links_)
            makeLink(*link, text);
        for (const auto& [path, folder] : folders)
            setAttributes(*folder);
    }

private:
    void takeBytes(const PlannedEntry& entry) {
        if (entry.kind == EntryKind::file)
            writeFile(entry);
        else if (entry.kind == EntryKind::link)
            links_.emplace_back(&entry, entry.size > 0 ? readText(entry) : entry.linkText);
        else if (entry.kind == EntryKind::hidden)
            readBytes(entry.size, [](std::string_view) { return true; });
    }

    void writeFile(const PlannedEntry& entry) {
        constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
        Descriptor file(::openat(top_.get(), placeOf(entry), flags, S_IRUSR | S_IWUSR));
        const auto append = [&](std::string_view bytes) {
            if (!writeAll(file.get(), bytes))
                return false;
            startFlush(file.get(), bytes.size());
            return true;
        };
        if (!file || !readBytes(entry.size, append) || ::fchmod(file.get(), entry.mode) != 0 ||
            ::futimens(file.get(), timesOf(entry).data()) != 0 || !file.close())
            raise(entry.path);
    }

    std::string readText(const PlannedEntry& link) {
        std::string text;
        readBytes(link.size, [&](std::string_view bytes) {
            text += bytes;
            return true;
        });
        if (text.ends_with('\0'))
            text.pop_back(); // APFS ends it with a NUL
        if (text.empty() || text.find('\0') != std::string::npos)
            throw Exception("the volume holds a link to nowhere: " + link.path);
        return text;
    }

    /// Passes that many bytes on. Returns false as soon as the sink refuses some.
    template <typename Sink>
    bool readBytes(std::uint64_t size, const Sink& sink) {
        while (size > 0) {
            const std::size_t wanted = std::min<std::uint64_t>(size, buffer_.size());
            const std::size_t count = source_(buffer_.data(), wanted);
            if (count == 0)
                throw Exception("the image is damaged: the volume's files are cut off");
            if (!sink({buffer_.data(), count}))
                return false;
            size -= count;
        }
        return true;
    }

    void makeLink(const PlannedEntry& link, const std::string& text) {
        if (::symlinkat(text.c_str(), top_.get(), placeOf(link)) != 0 ||
            ::utimensat(top_.get(), placeOf(link), timesOf(link).data(), AT_SYMLINK_NOFOLLOW) != 0)
            raise(link.path);
    }

    void setAttributes(const PlannedEntry& folder) {
        const Descriptor opened = openForReading(top_.get(), placeOf(folder), O_DIRECTORY | O_NOFOLLOW);
        if (!opened || ::fchmod(opened.get(), folder.mode | S_IRWXU) != 0 ||
            ::futimens(opened.get(), timesOf(folder).data()) != 0)
            raise(folder.path);
    }

    Descriptor top_;
    const ByteSource& source_;
    std::vector<char> buffer_ = std::vector<char>(std::size_t{1} << 18);
    std::vector<std::pair<const PlannedEntry*, std::string>> links_; ///< with their texts
};

} // namespace

void writeVolume(const VolumePlan& plan, const std::string& folder, const ByteSource& source) {
    Writer(folder, source).write(plan);
}

} // namespace join::platform::hdiutil
