#pragma once

#include "platform/HttpClient.h"

#include <memory>

namespace join::platform {

class CurlHandle;
class MainQueue;

/// HTTPS, by libcurl. The connections of get() are kept for the next request. Proxies are taken from the
/// environment. SIGPIPE must be ignored in the process. The destination of a download is a real path.
class CurlHttpClient : public HttpClient {
public:
    /// Throws Exception if libcurl cannot be initialised. The queue must outlive the client, its downloads
    /// and its connections.
    explicit CurlHttpClient(MainQueue& mainQueue);
    ~CurlHttpClient() override;

    HttpReply get(const HttpRequest& request) override;
    std::unique_ptr<Transfer> download(const DownloadRequest& request, DownloadDelegate& delegate) override;
    std::unique_ptr<Transfer> connect(PostRequest request, ConnectionDelegate& delegate) override;

private:
    MainQueue& mainQueue_;
    std::unique_ptr<CurlHandle> handle_;
};

} // namespace join::platform
