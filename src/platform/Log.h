#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace join::platform {

/// The platform's log call and the streams that it goes to.
class Log {
public:
    virtual ~Log() = default;

    /// Writes one line to standard error, in one write: local date and time with milliseconds, process name,
    /// process and thread number, the message. Control characters of the message other than line feed and
    /// tab, and bytes that are not UTF-8, are written as \xNN. Any thread.
    virtual void write(std::string_view message) = 0;

    /// Points standard input, output and error at the file, which is made when missing, opened for reading
    /// and appending. Does so only when they do not point at it already. When the file cannot be opened the
    /// streams stay as they are. Gives the file's size in bytes, 0 when it cannot be told. Main thread only.
    virtual std::uint64_t redirectStandardStreams(const std::string& path) = 0;
};

} // namespace join::platform
