#pragma once

#include "platform/HttpClient.h"

#include <memory>
#include <string>

namespace join::platform {

class MainQueue;
class TrustPolicy;

/// The HTTP client, in a module that is loaded only when needed: its libraries would delay the first window.
/// Once loaded it stays loaded, even if its file is deleted.
class HttpModule : public HttpClient {
public:
    /// Takes the absolute path of the module; loads nothing yet. The queue and the policy must outlive
    /// the downloads and the connections.
    HttpModule(std::string path, MainQueue& mainQueue, const TrustPolicy& policy);

    /// Loads the module on the first call. Returns false if that failed, then or earlier.
    bool load();

    /// These load the module if that has not happened yet. Without it, every request, download and connection
    /// fails with an error that says why.
    HttpReply get(const HttpRequest& request) override;
    std::unique_ptr<Transfer> download(const DownloadRequest& request, DownloadDelegate& delegate) override;
    std::unique_ptr<Transfer> connect(PostRequest request, ConnectionDelegate& delegate) override;

private:
    std::unique_ptr<HttpClient> openModule();

    std::string path_;
    MainQueue& mainQueue_;
    const TrustPolicy& policy_;
    bool tried_ = false;
    std::string failure_;
    std::unique_ptr<HttpClient> client_;
};

} // namespace join::platform

/// The module's only function. Returns a new client that the caller owns, or nullptr if none can be created.
/// Its downloads and connections report on the queue, which must outlive them like the policy.
extern "C" [[gnu::visibility("default")]] join::platform::HttpClient*
join_make_http_client(join::platform::MainQueue& mainQueue,
                      const join::platform::TrustPolicy& policy) noexcept;
