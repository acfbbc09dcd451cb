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
    std::optional<int> status = {};            ///< nothing when the connection was closed unanswered
    std::uint64_t bytes = 0;                   ///< of the body, as sent
    std::optional<std::string> userAgent = {}; ///< nothing: not told in the line
};

/// A line for each request, in a file and on standard output, each written when its request has been
/// answered: UTC time, method, target, status, bytes, and of some requests the user agent, with a blank
/// between them. Any thread.
class RequestLog {
public:
    /// Lines go to the end of the file; with an empty path to standard output only. Throws std::runtime_error
    /// when the file cannot be opened.
    explicit RequestLog(const std::string& path);

    void write(const RequestRecord& record);

private:
    std::mutex mutex_;
    std::ofstream file_;
};

} // namespace join::tools
