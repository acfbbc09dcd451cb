#include "platform/linux/http/CurlTransfer.h"

#include <memory>

namespace join::platform {

CURLcode perform(CURL* handle, const std::stop_token& stop) {
    const std::unique_ptr<CURLM, CURLMcode (*)(CURLM*)> multi(curl_multi_init(), curl_multi_cleanup);
    if (!multi || curl_multi_add_handle(multi.get(), handle) != CURLM_OK)
        return CURLE_OUT_OF_MEMORY;
    constexpr int longestWait = 1000; // in milliseconds
    const std::stop_callback wake(stop, [&] { curl_multi_wakeup(multi.get()); });
    int running = 1;
    while (!stop.stop_requested() && curl_multi_perform(multi.get(), &running) == CURLM_OK && running > 0)
        if (curl_multi_poll(multi.get(), nullptr, 0, longestWait, nullptr) != CURLM_OK)
            break;
    int left = 0;
    const CURLMsg* end = curl_multi_info_read(multi.get(), &left);
    const CURLcode code = end ? end->data.result : CURLE_ABORTED_BY_CALLBACK;
    curl_multi_remove_handle(multi.get(), handle);
    return code;
}

} // namespace join::platform
