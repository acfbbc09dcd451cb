#pragma once

#include "platform/linux/files/Descriptor.h"

#include <cstdint>
#include <string>

namespace join::platform {

/// What a thread gives up for good, with everything that it starts: all files but those allowed here
/// (landlock(7)), and the system calls of SystemCallFilter.h. What is open stays usable. A kernel without
/// Landlock refuses system calls alone.
class Confinement {
public:
    enum class Access { read, start, change };

    /// Nothing is allowed yet.
    Confinement();

    /// Allow access to a file, or to everything below a folder. What does not exist is left out.
    void allow(int file, Access access);
    void allow(const std::string& path, Access access);

    /// Allows to start a program, which must not be a script, with the system's loader and libraries.
    void allowProgram(const std::string& path);

    /// Confines the calling thread; with a path, to executing only that, as refuseSystemCalls() says. Makes
    /// only calls that are allowed between fork and exec. Returns false, with the reason in errno, if the
    /// thread may not be confined as it should.
    bool enter(const char* program = nullptr) const;

private:
    std::uint64_t known_; ///< the rights that the kernel can refuse, none without Landlock
    Descriptor ruleset_;
};

} // namespace join::platform
