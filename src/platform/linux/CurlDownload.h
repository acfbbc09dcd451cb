#pragma once

#include "platform/HttpClient.h"
#include "platform/linux/DownloadReport.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <thread>

namespace join::platform {

/// The longest body, in bytes, that a download takes: no disk image is anywhere near it.
inline constexpr std::uint64_t maximumDownloadSize = std::uint64_t{8} << 30;

/// A download by libcurl, on a thread of its own. Has begun when its file has been made and the server is
/// about to be asked. One at a time for each destination. Destroying it waits for the thread, which neither
/// the network nor a name lookup can hold up.
class CurlDownload final : public Download {
public:
    /// Starts it. Throws Exception or std::system_error when there is no handle of libcurl or no thread.
    CurlDownload(DownloadRequest request, MainQueue& mainQueue, DownloadDelegate& delegate);

private:
    void run(const std::stop_token& stop);
    std::optional<std::string> fetch(const std::stop_token& stop);

    DownloadRequest request_;
    DownloadReport report_;
    std::unique_ptr<void, void (*)(void*)> handle_; ///< a CURL
    std::jthread worker_;                           ///< ends before all that it uses
};

} // namespace join::platform
