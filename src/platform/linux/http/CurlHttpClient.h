#pragma once

#include "platform/HttpClient.h"

#include <memory>

namespace join::platform {

class MainQueue;

/// HTTPS, by libcurl. The connections of get() are kept for the next request. Proxies are taken from the
/// environment. SIGPIPE must be ignored in the process. The destination of a download is a real path.
class CurlHttpClient : public HttpClient {
public:
    /// Throws Exception if libcurl cannot be initialised. The queue must outlive the client, its downloads
    /// and its connections.
    explicit CurlHttpClient(MainQueue& mainQueue);

    HttpReply get(const HttpRequest& request) override;
    std::unique_ptr<Download> download(const DownloadRequest& request, DownloadDelegate& delegate) override;
    std::unique_ptr<Connection> connect(PostRequest request, ConnectionDelegate& delegate) override;

private:
    /// Sends the request once. Returns libcurl's code.
    int perform(const HttpRequest& request, bool decodes, HttpReply& reply);

    MainQueue& mainQueue_;
    std::unique_ptr<void, void (*)(void*)> handle_; ///< a CURL
};

} // namespace join::platform
