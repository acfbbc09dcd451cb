#include "platform/linux/http/CurlTransfer.h"

#include "platform/linux/files/StagedFile.h"

#include <cerrno>
#include <chrono>
#include <functional>
#include <string_view>
#include <system_error>
#include <utility>

namespace join::platform {

namespace {

constexpr long bufferSize = 256L << 10;

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds reportInterval{100};

/// Told how many bytes of how many have arrived.
using Progress = std::function<void(std::uint64_t received, std::uint64_t announced)>;

std::string withReason(const std::string& text, int error) {
    return text + ": " + std::generic_category().message(error);
}

/// Receives one body into its file.
class Body final : CurlExchange {
public:
    Body(const DownloadRequest& request, CurlHandle& handle, Progress progress);

    /// Returns why the download cannot begin, or nothing if it can.
    Failure prepare();

    /// Receives the complete file and puts it at its destination.
    Failure perform(const std::stop_token& stop);

private:
    bool take(std::string_view bytes) override;
    void tick() noexcept override;
    Failure reasonToRefuseAnswer() const;
    curl_off_t announcedLength() const;
    bool endsWithConnection() const;

    const DownloadRequest& request_;
    Progress progress_;
    Clock::time_point nextReport_;
    std::uint64_t written_ = 0;  ///< bytes
    std::uint64_t reported_ = 0; ///< of them
    StagedFile file_;
    bool hasBody_ = false;
};

Body::Body(const DownloadRequest& request, CurlHandle& handle, Progress progress)
    : CurlExchange(handle, request.url, maximumDownloadSize, request.timeout), request_(request),
      progress_(std::move(progress)), file_(request.destination) {
    set(CURLOPT_USERAGENT, withoutControls(request.userAgent).c_str());
    setStallTimeout(request.stallTimeout);
    set(CURLOPT_BUFFERSIZE, bufferSize);
}

Failure Body::prepare() {
    if (!failure_ && !file_.open())
        failure_ = withReason("A file cannot be made at " + request_.destination, errno);
    return failure_;
}

Failure Body::perform(const std::stop_token& stop) {
    const CURLcode code = CurlExchange::perform(stop);
    if (code != CURLE_OK)
        return descriptionOf(code);
    if (!hasBody_)
        return reasonToRefuseAnswer().value_or("The server has sent no file");
    // libcurl accepts the end of the network connection as that of TLS, so anyone on the way could shorten a
    // file whose length was not announced.
    if (endsWithConnection() && !hasEndOfTls_)
        return "No whole answer has come: the connection was cut off";
    if (!file_.commit())
        return withReason("The file cannot be put at " + request_.destination, errno);
    return std::nullopt;
}

bool Body::take(std::string_view bytes) {
    if (!std::exchange(hasBody_, true))
        failure_ = reasonToRefuseAnswer();
    if (!failure_ && !file_.write(bytes))
        failure_ = withReason("The file cannot be written", errno);
    if (!failure_)
        written_ += bytes.size();
    return !failure_;
}

void Body::tick() noexcept {
    const curl_off_t announced = announcedLength();
    const auto now = Clock::now();
    if (written_ == reported_ || announced <= 0 || now < nextReport_)
        return;
    nextReport_ = now + reportInterval;
    reported_ = written_;
    progress_(written_, static_cast<std::uint64_t>(announced));
}

Failure Body::reasonToRefuseAnswer() const {
    if (status() < 200 || status() > 299)
        return "The server has answered with status " + std::to_string(status());
    const curl_off_t announced = announcedLength();
    const auto room = file_.freeSpace();
    if (room && announced > 0 && static_cast<std::uint64_t>(announced) > *room)
        return "The file needs " + std::to_string(announced) + " bytes, but the disk has room for " +
               std::to_string(*room);
    return std::nullopt;
}

/// Returns the length in bytes, or -1 if none is announced.
curl_off_t Body::announcedLength() const {
    curl_off_t length = -1;
    curl_easy_getinfo(handle(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
    return length;
}

/// Returns whether only the end of the connection marks the end of the body (RFC 9112, 6.3).
bool Body::endsWithConnection() const {
    long version = CURL_HTTP_VERSION_NONE;
    curl_easy_getinfo(handle(), CURLINFO_HTTP_VERSION, &version);
    curl_header* coding = nullptr;
    return announcedLength() < 0 && version < CURL_HTTP_VERSION_2_0 &&
           curl_easy_header(handle(), "Transfer-Encoding", 0, CURLH_HEADER, -1, &coding) != CURLHE_OK;
}

void download(const DownloadRequest& request, DownloadDelegate& delegate, CurlHandle& handle,
              const Reports& reports, const std::stop_token& stop) {
    Body body(request, handle, [&](std::uint64_t received, std::uint64_t announced) {
        reports.tell([&delegate, received, announced] { delegate.downloadDidReceive(received, announced); });
    });
    Failure failure = body.prepare();
    if (!failure) {
        reports.tell([&delegate] { delegate.downloadDidBegin(); });
        failure = body.perform(stop);
    }
    if (failure)
        reports.tell(
            [&delegate, error = HttpError{*failure, request.url}] { delegate.downloadDidFail(error); });
    else
        reports.tell([&delegate] { delegate.downloadDidFinish(); });
}

} // namespace

std::unique_ptr<Transfer> startDownload(DownloadRequest request, MainQueue& mainQueue,
                                        const TrustPolicy& policy, DownloadDelegate& delegate) {
    return std::make_unique<CurlTransfer>(
        mainQueue, policy,
        [request = std::move(request), &delegate](auto&... given) { download(request, delegate, given...); });
}

} // namespace join::platform
