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

    /// Every upload of this run: one that a later upload has replaced goes on none the less.
    std::vector<std::unique_ptr<platform::Connection>> connections;
};

/// The one set of these slots.
LogUploadSlots& logUpload();

} // namespace join
