#pragma once

#include "base/Text.h"
#include "platform/HttpClient.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace join {

/// What the log upload holds for the whole run.
struct LogUploadSlots {
    std::optional<std::string> receivedData;       ///< of the current upload's response
    platform::Connection* theConnection = nullptr; ///< the current upload; none after a failure
    std::string response = "false";                ///< "true" once an upload connection has been opened

    /// Every upload that goes on, those too that a later one has replaced. What has ended goes when the next
    /// one begins and none is under way.
    std::vector<std::unique_ptr<platform::Connection>> connections;
    int underWay = 0; ///< how many have not told their end
};

/// Sends the product's log folder to the web server of the session. What comes of it is told in the log.
/// Lives as long as the main queue may hold its work. Main thread only.
class LogUpload final : private platform::ConnectionDelegate {
public:
    /// Starts an upload. Gives the upload flag: "true" when an earlier upload of this run has been opened.
    std::string sendLogFiles(const Text& comment);

    const LogUploadSlots& slots() const { return slots_; }

private:
    void connectionDidReceiveResponse() override;
    void connectionDidReceiveData(std::string_view data) override;
    void connectionDidFinishLoading() override;
    void connectionDidFail(const platform::HttpError& error) override;
    void openUpload(platform::PostRequest request);

    LogUploadSlots slots_;
};

} // namespace join
