#pragma once

#include "platform/HttpClient.h"
#include "platform/linux/http/CurlWorker.h"
#include "platform/linux/http/DelegateReport.h"

namespace join::platform {

/// A POST request by libcurl, on a thread of its own, with the headers that it is given and no others but
/// "Host", and "Content-Length" where that is missing. Control characters are left out of the headers.
class CurlConnection final : public Connection {
public:
    /// Starts it. Throws Exception or std::system_error when there is no handle of libcurl or no thread.
    CurlConnection(PostRequest request, MainQueue& mainQueue, ConnectionDelegate& delegate);

private:
    void run(CURL* handle, const std::stop_token& stop);

    PostRequest request_;
    DelegateReport<ConnectionDelegate> report_;
    CurlWorker worker_; ///< ends before all that it uses
};

} // namespace join::platform
