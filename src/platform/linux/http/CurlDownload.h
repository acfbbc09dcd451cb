#pragma once

#include "platform/HttpClient.h"
#include "platform/linux/http/CurlWorker.h"
#include "platform/linux/http/DelegateReport.h"

#include <cstdint>
#include <optional>
#include <string>

namespace join::platform {

/// The longest body, in bytes, that a download takes: no disk image is anywhere near it.
inline constexpr std::uint64_t maximumDownloadSize = std::uint64_t{8} << 30;

/// A download by libcurl, on a thread of its own. Has begun when its file has been made and the server is
/// about to be asked. One at a time for each destination.
class CurlDownload final : public Download {
public:
    /// Starts it. Throws Exception or std::system_error when there is no handle of libcurl or no thread.
    CurlDownload(DownloadRequest request, MainQueue& mainQueue, DownloadDelegate& delegate);

private:
    void run(CURL* handle, const std::stop_token& stop);
    std::optional<std::string> fetch(CURL* handle, const std::stop_token& stop);

    DownloadRequest request_;
    DelegateReport<DownloadDelegate> report_;
    CurlWorker worker_; ///< ends before all that it uses
};

} // namespace join::platform
