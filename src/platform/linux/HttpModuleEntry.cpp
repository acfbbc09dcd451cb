#include "platform/linux/HttpModuleEntry.h"
#include "platform/linux/CurlHttpClient.h"

#include <exception>

join::platform::HttpClient* join_make_http_client() noexcept {
    try {
        return new join::platform::CurlHttpClient;
    } catch (const std::exception&) {
        return nullptr;
    }
}
