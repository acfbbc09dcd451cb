#pragma once

#include "platform/linux/files/Descriptor.h"

#include <cstdint>
#include <optional>
#include <string>
#include <sys/types.h>

namespace join::platform {

/// What has come of a download that broke off, so that the next attempt can continue it, also in a later
/// process. It lies in the folder "downloads" of the user's private cache, with what must be the same when it
/// is continued. A part of another URL, or one not touched for a day, is removed. Nothing throws: without a
/// part, or where none can be kept, the download begins at the beginning.
class KeptPart {
public:
    /// What a part belongs to.
    struct Whole {
        std::string validator; ///< an entity tag, in quotes, or the time of the last change (RFC 9110, 8.8)
        std::uint64_t length = 0; ///< in bytes
    };

    /// Removes the parts that are too old.
    static void removeOutdated();

    /// Looks for the part of a file with that name, without folders, at a URL.
    KeptPart(std::string url, const std::string& name);

    /// Returns nothing if there is no part.
    const std::optional<Whole>& whole() const { return whole_; }

    /// Returns the size of the part in bytes: more than none, less than the whole.
    std::uint64_t size() const { return size_; }

    /// Returns the part, open for appending. Only if there is one, and once.
    Descriptor open() { return std::move(file_); }

    /// Keeps what is in an open file, and what will be written to it. Replaces any other part of that name.
    void keep(int file, const Whole& whole);

    void remove();

private:
    std::optional<Whole> find();

    std::string url_;
    std::string name_;
    std::string notes_; ///< the file beside it that says what it belongs to
    Descriptor folder_;
    Descriptor file_;
    std::optional<Whole> whole_;
    std::uint64_t size_ = 0;
};

} // namespace join::platform
