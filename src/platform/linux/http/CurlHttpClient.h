#pragma once

#include "platform/HttpClient.h"

#include <memory>

namespace join::platform {

class MainQueue;

/// HTTPS by libcurl. The connections of get() are kept for the next request. Proxies are those that curl
/// finds in the environment. Needs SIGPIPE to be ignored in its process. The destination of a download is a
/// path of the file system itself.
class CurlHttpClient : public HttpClient {
public:
    /// Throws Exception when libcurl cannot be made ready. The queue outlives the client, its downloads and
    /// its connections.
    explicit CurlHttpClient(MainQueue& mainQueue);

    HttpReply get(const HttpRequest& request) override;
    std::unique_ptr<Download> download(const DownloadRequest& request, DownloadDelegate& delegate) override;
    std::unique_ptr<Connection> connect(PostRequest request, ConnectionDelegate& delegate) override;

private:
    /// Asks once. Returns libcurl's code.
    int perform(const HttpRequest& request, bool decodes, HttpReply& reply);

    MainQueue& mainQueue_;
    std::unique_ptr<void, void (*)(void*)> handle_; ///< a CURL
};

} // namespace join::platform
