#include "service/RequestLog.h"

#include "service/Printable.h"

#include <array>
#include <chrono>
#include <ctime>
#include <iostream>
#include <stdexcept>

namespace join::tools {
namespace {

std::string currentTime() {
    using namespace std::chrono;
    const auto now = time_point_cast<milliseconds>(system_clock::now());
    const std::time_t seconds = system_clock::to_time_t(now);
    std::tm time{};
    ::gmtime_r(&seconds, &time);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S.", &time);
    const std::string milliseconds = std::to_string(1000 + now.time_since_epoch().count() % 1000).substr(1);
    return text.data() + milliseconds + 'Z';
}

std::string field(const std::string& text) { return text.empty() ? "-" : printable(text); }

} // namespace

RequestLog::RequestLog(const std::string& path) {
    if (path.empty())
        return;
    file_.open(path, std::ios::app);
    if (!file_)
        throw std::runtime_error("cannot write " + path);
}

void RequestLog::write(const RequestRecord& record) {
    std::string line = currentTime() + ' ' + field(record.method) + ' ' + field(record.target) + ' ' +
                       (record.status ? std::to_string(*record.status) : "-") + ' ' +
                       std::to_string(record.bytes);
    if (record.userAgent)
        line += ' ' + field(*record.userAgent);
    line += '\n';
    const std::lock_guard lock(mutex_);
    file_ << line << std::flush;
    std::cout << line << std::flush;
}

} // namespace join::tools
