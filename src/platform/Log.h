#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace join::platform {

/// The platform's log and the standard streams.
class Log {
public:
    virtual ~Log() = default;

    /// Writes one line to standard error, in a single write: local date and time with milliseconds, process
    /// name, process and thread number, the message. Control characters in the message, except line feed and
    /// tab, and bytes that are not UTF-8 are written as \xNN. Any thread.
    virtual void write(std::string_view message) = 0;

    /// Points standard input, output and error at the file, which is opened for reading and appending and
    /// created if it is missing. Does nothing if they already point at it. If the file cannot be opened, the
    /// streams stay as they are. Returns the file's size in bytes, or 0 if it is not known. Main thread only.
    virtual std::uint64_t redirectStandardStreams(const std::string& path) = 0;
};

} // namespace join::platform
