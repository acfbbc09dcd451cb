#pragma once

#include "platform/HttpClient.h"
#include "platform/linux/http/CurlExchange.h"
#include "platform/linux/http/Reports.h"

#include <functional>
#include <thread>
#include <utility>

namespace join::platform {

/// A download or an upload by libcurl, on a thread of its own. The destructor asks the work to stop and waits
/// for its end, which neither the network nor a name lookup can delay.
class CurlTransfer final : public Transfer {
public:
    using Work = std::function<void(CurlHandle& handle, const Reports& reports, const std::stop_token& stop)>;

    /// Starts the work. Throws Exception or std::system_error if no handle or no thread can be created. Main
    /// thread only.
    CurlTransfer(MainQueue& mainQueue, const TrustPolicy& policy, Work work)
        : reports_(mainQueue), handle_(policy), work_(std::move(work)),
          thread_([this](const std::stop_token& stop) { work_(handle_, reports_, stop); }) {}

private:
    Reports reports_;
    CurlHandle handle_;
    Work work_;
    std::jthread thread_; ///< ends before everything that it uses
};

/// Starts a POST request with the given headers and no others but "Host", and "Content-Length" if it is
/// missing. Control characters are removed from the headers. Throws like the constructor above.
std::unique_ptr<Transfer> startConnection(PostRequest request, MainQueue& mainQueue,
                                          const TrustPolicy& policy, ConnectionDelegate& delegate);

/// The longest body, in bytes, that a download accepts: no disk image comes near it.
inline constexpr std::uint64_t maximumDownloadSize = std::uint64_t{8} << 30;

/// Starts a download. It reports its beginning when its file has been created and the request is about to be
/// sent. Only one at a time for each destination. Throws like the constructor above.
std::unique_ptr<Transfer> startDownload(DownloadRequest request, MainQueue& mainQueue,
                                        const TrustPolicy& policy, DownloadDelegate& delegate);

} // namespace join::platform
