#pragma once

#include "platform/HttpClient.h"

#include <memory>

namespace join::platform {

class CurlHandle;
class MainQueue;
class TrustPolicy;

/// HTTPS, by libcurl. The connections of get() are kept for the next request. Proxies are taken from the
/// environment. SIGPIPE must be ignored in the process. The destination of a download is a real path.
class CurlHttpClient : public HttpClient {
public:
    /// Throws Exception if libcurl cannot be initialised. The queue and the policy must outlive the client, its
    /// downloads and its connections.
    CurlHttpClient(MainQueue& mainQueue, const TrustPolicy& policy);
    ~CurlHttpClient() override;

    HttpReply get(const HttpRequest& request) override;
    std::unique_ptr<Transfer> download(const DownloadRequest& request, DownloadDelegate& delegate) override;
    std::unique_ptr<Transfer> connect(PostRequest request, ConnectionDelegate& delegate) override;

private:
    MainQueue& mainQueue_;
    const TrustPolicy& policy_;
    std::unique_ptr<CurlHandle> handle_;
};

} // namespace join::platform
