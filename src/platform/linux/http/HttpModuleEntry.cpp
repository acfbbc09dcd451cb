#include "platform/linux/http/HttpModuleEntry.h"
#include "platform/linux/http/CurlHttpClient.h"

#include <exception>

join::platform::HttpClient* join_make_http_client(join::platform::MainQueue& mainQueue) noexcept {
    try {
        return new join::platform::CurlHttpClient(mainQueue);
    } catch (const std::exception&) {
        return nullptr;
    }
}
