#pragma once

#include <cstdint>
#include <fstream>
#include <mutex>
#include <optional>
#include <string>

namespace join::tools {

struct RequestRecord {
    std::string method;
    std::string target;                        ///< as it came
    std::optional<int> status = {};            ///< nothing if the connection was closed unanswered
    std::uint64_t bytes = 0;                   ///< of the body, as sent
    std::optional<std::string> userAgent = {}; ///< nothing: left out of the line
};

/// Writes a line for each answered request to a file and to standard output: UTC time, method, target,
/// status, bytes, and for some requests the user agent, separated by blanks. Any thread.
class RequestLog {
public:
    /// Appends to the file; with an empty path writes to standard output only. Throws std::runtime_error if
    /// the file cannot be opened.
    explicit RequestLog(const std::string& path);

    void write(const RequestRecord& record);

private:
    std::mutex mutex_;
    std::ofstream file_;
};

} // namespace join::tools
