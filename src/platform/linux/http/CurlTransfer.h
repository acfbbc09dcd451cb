#pragma once

#include "platform/linux/http/CurlOptions.h"
#include "platform/linux/http/DelegateReport.h"

#include <stop_token>
#include <thread>
#include <utility>

namespace join::platform {

/// A Download or a Connection by libcurl, on a thread of its own. The destructor asks the work to stop and
/// waits for its end, which neither the network nor a name lookup can delay.
template <typename Transfer, typename Request, typename Delegate>
class CurlTransfer final : public Transfer {
public:
    using Report = DelegateReport<Delegate>;
    using Work = void (*)(const Request&, const Report&, CURL*, const std::stop_token&);

    /// Starts the work. Throws Exception or std::system_error if no handle or no thread can be created. Main
    /// thread only.
    CurlTransfer(Request request, MainQueue& mainQueue, Delegate& delegate, Work work)
        : request_(std::move(request)), report_(mainQueue, delegate), handle_(makeCurlHandle()),
          thread_(
              [this, work](const std::stop_token& stop) { work(request_, report_, handle_.get(), stop); }) {}

private:
    Request request_;
    Report report_;
    CurlHandle handle_;
    std::jthread thread_; ///< ends before everything that it uses
};

/// Like curl_easy_perform, but can be stopped at any time.
CURLcode perform(CURL* handle, const std::stop_token& stop);

/// Starts a POST request with the given headers and no others but "Host", and "Content-Length" if it is
/// missing. Control characters are removed from the headers. Throws like the constructor above.
std::unique_ptr<Connection> startConnection(PostRequest request, MainQueue& mainQueue,
                                            ConnectionDelegate& delegate);

/// The longest body, in bytes, that a download accepts: no disk image comes near it.
inline constexpr std::uint64_t maximumDownloadSize = std::uint64_t{8} << 30;

/// Starts a download. It reports its beginning when its file has been created and the request is about to be
/// sent. Only one at a time for each destination. Throws like the constructor above.
std::unique_ptr<Download> startDownload(DownloadRequest request, MainQueue& mainQueue,
                                        DownloadDelegate& delegate);

} // namespace join::platform
