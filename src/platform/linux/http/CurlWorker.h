#pragma once

#include "platform/linux/http/CurlOptions.h"

#include <functional>
#include <stop_token>
#include <thread>

namespace join::platform {

/// A thread with a handle of libcurl. Destroying it asks the work to stop and waits for its end; perform()
/// ends at once then, which neither the network nor a name lookup can hold up.
class CurlWorker {
public:
    using Work = std::function<void(CURL* handle, const std::stop_token& stop)>;

    /// Starts the work on the thread. Throws Exception or std::system_error when there is no handle or no
    /// thread. Main thread only.
    explicit CurlWorker(Work work);

    /// Like curl_easy_perform, but can be stopped at any time.
    static CURLcode perform(CURL* handle, const std::stop_token& stop);

private:
    CurlHandle handle_;
    std::jthread thread_; ///< ends before the handle that it uses
};

} // namespace join::platform
