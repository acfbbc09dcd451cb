#pragma once

#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/linux/files/Descriptor.h"

#include <optional>
#include <string>
#include <sys/types.h>

namespace join::platform {

/// The log on standard error. A line begins with "2026-11-22 21:56:36.123 Join[417:418] ". A line that the
/// file does not take, as on a full disk, goes to the standard error that this began with. An error there is
/// ignored: there is nowhere to report it.
class StderrLog : public Log {
public:
    /// The clock is used as long as this object lives.
    StderrLog(std::string processName, Clock& clock);

    void write(std::string_view message) override;
    std::uint64_t redirectStandardStreams(const std::string& path) override;

private:
    struct FileIdentity {
        dev_t device;
        ino_t inode;
        bool operator==(const FileIdentity&) const = default;
    };

    std::string processName_;
    Clock& clock_;
    Descriptor first_;                    ///< where standard error led before it was pointed anywhere
    std::optional<FileIdentity> current_; ///< the file that the streams were last pointed at
};

/// The call stack of the calling thread, a line for each frame, the innermost first. For
/// Exception::setCallStackSource.
std::string callStack();

} // namespace join::platform
