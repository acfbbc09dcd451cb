#pragma once

#include "platform/Log.h"

#include <string>
#include <vector>

namespace join::test {

/// Keeps the lines, and points no stream anywhere.
struct RecordingLog final : platform::Log {
    std::vector<std::string> lines;

    void write(std::string_view line) override { lines.emplace_back(line); }
    std::uint64_t redirectStandardStreams(const std::string& /*path*/) override { return 0; }
};

} // namespace join::test
