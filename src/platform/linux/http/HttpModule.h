#pragma once

#include "platform/HttpClient.h"

#include <memory>
#include <string>

namespace join::platform {

class MainQueue;

/// The HTTP client in a module that is loaded when it is needed: its libraries would keep the first window
/// waiting. Once loaded it stays so, also when its file is deleted.
class HttpModule : public HttpClient {
public:
    /// The absolute path of the module; nothing is loaded yet. The queue outlives the downloads and the
    /// connections.
    HttpModule(std::string path, MainQueue& mainQueue);

    /// Loads the module, the first time that it is called; false when that failed, then or now.
    bool load();

    /// These load the module when nobody has. Without it every request is answered with an error that says
    /// why, and every download and every connection fails with it.
    HttpReply get(const HttpRequest& request) override;
    std::unique_ptr<Download> download(const DownloadRequest& request, DownloadDelegate& delegate) override;
    std::unique_ptr<Connection> connect(PostRequest request, ConnectionDelegate& delegate) override;

private:
    std::unique_ptr<HttpClient> openModule();

    std::string path_;
    MainQueue& mainQueue_;
    bool tried_ = false;
    std::string failure_;
    std::unique_ptr<HttpClient> client_;
};

} // namespace join::platform

/// The one function of the module. Gives a new client that the caller owns, nullptr when none can be made.
/// The queue is where its downloads and connections report; it outlives them.
extern "C" [[gnu::visibility("default")]] join::platform::HttpClient*
join_make_http_client(join::platform::MainQueue& mainQueue) noexcept;
