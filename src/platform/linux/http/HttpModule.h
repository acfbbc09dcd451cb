#pragma once

#include "platform/HttpClient.h"
#include "platform/linux/files/Descriptor.h"

#include <future>
#include <memory>
#include <string>

namespace join::platform {

class MainQueue;
class TrustPolicy;

/// The HTTP client, in a module that is loaded only when needed: its libraries would delay the first window, and
/// they take memory. The module works even if its file is deleted or replaced.
class HttpModule : public HttpClient {
public:
    /// Takes the absolute path of the module and opens it; loads nothing yet. The queue and the policy must
    /// outlive the downloads and the connections.
    HttpModule(std::string path, MainQueue& mainQueue, const TrustPolicy& policy);

    /// Begins to load the module, on a thread of its own. Call it before the first request, once at most.
    void begin();

    /// These wait for the module, and load it if that has not begun. Without it, every request, download and
    /// connection fails with an error that says why.
    HttpReply get(const HttpRequest& request) override;
    std::unique_ptr<Transfer> download(const DownloadRequest& request, DownloadDelegate& delegate) override;
    std::unique_ptr<Transfer> connect(PostRequest request, ConnectionDelegate& delegate) override;

private:
    bool load();
    std::unique_ptr<HttpClient> openModule();

    std::string path_;
    Descriptor file_;
    MainQueue& mainQueue_;
    const TrustPolicy& policy_;
    std::string failure_;
    std::future<std::unique_ptr<HttpClient>> loading_; ///< until its result has been taken
    std::unique_ptr<HttpClient> client_;
};

} // namespace join::platform

/// The module's only function. Returns a new client that the caller owns, or nullptr if none can be created.
/// Its downloads and connections report on the queue, which must outlive them like the policy.
extern "C" [[gnu::visibility("default")]] join::platform::HttpClient*
join_make_http_client(join::platform::MainQueue& mainQueue,
                      const join::platform::TrustPolicy& policy) noexcept;
