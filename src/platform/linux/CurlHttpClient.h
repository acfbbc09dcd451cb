#pragma once

#include "platform/HttpClient.h"

#include <memory>

namespace join::platform {

/// HTTPS by libcurl. Connections are kept for the next request. Proxies are those that curl finds in the
/// environment. Needs SIGPIPE to be ignored in its process.
class CurlHttpClient : public HttpClient {
public:
    /// Throws Exception when libcurl cannot be made ready.
    CurlHttpClient();

    HttpReply get(const HttpRequest& request) override;

private:
    std::unique_ptr<void, void (*)(void*)> handle_; ///< a CURL
};

} // namespace join::platform
