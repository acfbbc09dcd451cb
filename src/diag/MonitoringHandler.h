#pragma once

#include <string>

namespace join {

/// The milestones that this run has reached, which the agent is told when it starts. Main thread only.
class MonitoringHandler {
public:
    /// Sets one entry, "M1" to "M4", and logs them all.
    static void addkey(const std::string& key, const std::string& value);

    /// The local time of day as "hh:mm:ss" on the 12-hour clock.
    static std::string currentTime();

    /// All entries as one JSON object of texts, in compact form; empty before the first entry.
    static std::string getJsonString();
};

} // namespace join
