#pragma once

#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/linux/files/Descriptor.h"

#include <string>
#include <sys/types.h>
#include <utility>

namespace join::platform {

/// The log on standard error. A line begins with "2026-11-22 21:56:36.123 Join[417:418] ". If the file
/// refuses a line, as on a full disk, the line goes to the original standard error. An error there is
/// ignored: there is nowhere to report it.
class StderrLog : public Log {
public:
    /// The clock must outlive this object.
    StderrLog(std::string processName, Clock& clock);

    void write(std::string_view message) override;
    std::uint64_t redirectStandardStreams(const std::string& path) override;

private:
    std::string processName_;
    Clock& clock_;
    Descriptor first_;                  ///< the standard error of the start, before any redirection
    std::pair<dev_t, ino_t> current_{}; ///< the file to which the streams were last redirected
};

/// Returns the call stack of the calling thread, one line for each frame, the innermost first. For
/// Exception::setCallStackSource.
std::string callStack();

} // namespace join::platform
