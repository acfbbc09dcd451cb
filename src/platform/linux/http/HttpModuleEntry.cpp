#include "platform/linux/http/CurlHttpClient.h"
#include "platform/linux/http/HttpModule.h"

#include <exception>

join::platform::HttpClient* join_make_http_client(join::platform::MainQueue& mainQueue,
                                                  const join::platform::TrustPolicy& policy) noexcept {
    try {
        return new join::platform::CurlHttpClient(mainQueue, policy);
    } catch (const std::exception&) {
        return nullptr;
    }
}
