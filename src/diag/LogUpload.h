#pragma once

#include "base/Text.h"
#include "platform/HttpClient.h"

#include <memory>
#include <string>
#include <vector>

namespace join {

/// Sends the product's log folder to the session's web server, and logs the result. Must live as long as the
/// main queue may hold its work. Main thread only.
class LogUpload final : private platform::ConnectionDelegate {
public:
    /// Starts an upload. Returns the upload flag: "true" if an earlier upload of this run has been opened.
    std::string sendLogFiles(const Text& comment);

private:
    void connectionDidReceiveResponse() override;
    void connectionDidReceiveData(std::string_view data) override;
    void connectionDidFinishLoading() override;
    void connectionDidFail(const platform::HttpError& error) override;
    void openUpload(platform::PostRequest request);

    std::string receivedData_;       ///< the answer to the current upload so far
    std::string response_ = "false"; ///< "true" once an upload connection has been opened

    /// All uploads, including unfinished ones that a later upload has replaced. Finished ones are destroyed
    /// when the next upload begins and none is under way.
    std::vector<std::unique_ptr<platform::Connection>> connections_;
    int underWay_ = 0; ///< how many have not reported their end
};

} // namespace join
