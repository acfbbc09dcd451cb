#pragma once

#include "platform/linux/http/CurlOptions.h"
#include "platform/linux/http/DelegateReport.h"

#include <stop_token>
#include <thread>
#include <utility>

namespace join::platform {

/// A Download or a Connection by libcurl, on a thread of its own. Destroying it asks the work to stop and
/// waits for its end, which neither the network nor a name lookup can hold up.
template <typename Transfer, typename Request, typename Delegate>
class CurlTransfer final : public Transfer {
public:
    using Report = DelegateReport<Delegate>;
    using Work = void (*)(const Request&, const Report&, CURL*, const std::stop_token&);

    /// Starts it. Throws Exception or std::system_error when there is no handle of libcurl or no thread. Main
    /// thread only.
    CurlTransfer(Request request, MainQueue& mainQueue, Delegate& delegate, Work work)
        : request_(std::move(request)), report_(mainQueue, delegate), handle_(makeCurlHandle()),
          thread_(
              [this, work](const std::stop_token& stop) { work(request_, report_, handle_.get(), stop); }) {}

private:
    Request request_;
    Report report_;
    CurlHandle handle_;
    std::jthread thread_; ///< ends before all that it uses
};

/// Like curl_easy_perform, but can be stopped at any time.
CURLcode perform(CURL* handle, const std::stop_token& stop);

/// A POST request with the headers that it is given and no others but "Host", and "Content-Length" where that
/// is missing. Control characters are left out of the headers. Throws as above.
std::unique_ptr<Connection> startConnection(PostRequest request, MainQueue& mainQueue,
                                            ConnectionDelegate& delegate);

/// The longest body, in bytes, that a download takes: no disk image is anywhere near it.
inline constexpr std::uint64_t maximumDownloadSize = std::uint64_t{8} << 30;

/// A download. It has begun when its file has been made and the server is about to be asked. One at a time
/// for each destination. Throws as above.
std::unique_ptr<Download> startDownload(DownloadRequest request, MainQueue& mainQueue,
                                        DownloadDelegate& delegate);

} // namespace join::platform
