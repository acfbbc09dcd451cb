#pragma once

#include "platform/HttpClient.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace join {

/// What the log upload holds for the whole run. Main thread only.
struct LogUploadSlots {
    std::optional<std::string> receivedData;       ///< of the current upload's response
    platform::Connection* theConnection = nullptr; ///< the current upload; none after a failure
    std::string response = "false";                ///< "true" once an upload connection has been opened

    /// Every upload that goes on, those too that a later one has replaced. What has ended goes when the next
    /// one begins and none is under way.
    std::vector<std::unique_ptr<platform::Connection>> connections;
    int underWay = 0; ///< how many have not told their end
};

/// The one set of these slots.
LogUploadSlots& logUpload();

} // namespace join
