#include "platform/linux/HttpModuleEntry.h"
#include "platform/linux/CurlHttpClient.h"

#include <exception>

join::platform::HttpClient* join_make_http_client(join::platform::MainQueue& mainQueue) noexcept {
    try {
        return new join::platform::CurlHttpClient(mainQueue);
    } catch (const std::exception&) {
        return nullptr;
    }
}
