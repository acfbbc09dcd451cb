#pragma once

#include <string>

namespace join {

/// The milestones that this run has reached, passed to the agent when it starts. Main thread only.
class MonitoringHandler {
public:
    /// Sets one entry, "M1" to "M4", and logs them all.
    static void addkey(const std::string& key, const std::string& value);

    /// Returns the local time of day as "hh:mm:ss" on the 12-hour clock.
    static std::string currentTime();

    /// Returns all entries as one compact JSON object of texts, or an empty text before the first entry.
    static std::string getJsonString();
};

} // namespace join
