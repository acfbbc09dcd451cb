#include "platform/linux/http/CurlTransfer.h"

#include "platform/linux/files/Folders.h"
#include "platform/linux/files/StagedFile.h"
#include "platform/linux/http/KeptPart.h"

#include <cerrno>
#include <chrono>
#include <ctime>
#include <string_view>
#include <system_error>
#include <utility>

namespace join::platform {

namespace {

constexpr long bufferSize = 256L << 10;

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds reportInterval{100};

std::string withReason(const std::string& text, int error) {
    return text + ": " + std::generic_category().message(error);
}

/// Receives one body into its file, or the rest of one that was kept.
class Body final : CurlExchange {
public:
    Body(const DownloadRequest& request, DownloadDelegate& delegate, CurlHandle& handle,
         const Reports& reports, KeptPart& part);

    /// Returns why the download cannot begin, or nothing if it can.
    Failure prepare();

    /// Receives the complete file and puts it at its destination.
    Failure perform(const std::stop_token& stop);

    /// Returns whether the server has answered, but not with the rest of what was kept.
    bool mustBeginAfresh() const { return asksForRest_ && !hasRest_ && status() >= 200; }

private:
    bool take(std::string_view bytes) override;
    void tick() noexcept override;
    Failure reasonToRefuseAnswer() const;
    void continueOrKeep();
    bool isRest() const;
    std::string header(const char* name) const;
    std::string validator() const;
    curl_off_t announcedLength() const;
    bool endsWithConnection() const;

    const DownloadRequest& request_;
    DownloadDelegate& delegate_;
    const Reports& reports_;
    KeptPart& part_;
    Clock::time_point nextReport_;
    std::uint64_t written_ = 0;  ///< bytes, with those kept
    std::uint64_t reported_ = 0; ///< of them
    StagedFile file_;
    bool hasBody_ = false;
    bool asksForRest_ = false;
    bool hasRest_ = false; ///< the answer is the rest of what was kept
};

Body::Body(const DownloadRequest& request, DownloadDelegate& delegate, CurlHandle& handle,
           const Reports& reports, KeptPart& part)
    : CurlExchange(handle, request.url, maximumDownloadSize, request.timeout), request_(request),
      delegate_(delegate), reports_(reports), part_(part), file_(request.destination) {
    set(CURLOPT_USERAGENT, withoutControls(request.userAgent).c_str());
    setStallTimeout(request.stallTimeout);
    set(CURLOPT_BUFFERSIZE, bufferSize);
    if (part.whole()) {
        asksForRest_ = true;
        addHeader("Range: bytes=" + std::to_string(part.size()) + "-");
        addHeader("If-Range: " + part.whole()->validator);
    }
}

Failure Body::prepare() {
    if (!failure_ && !file_.open())
        failure_ = withReason("A file cannot be made at " + request_.destination, errno);
    return failure_;
}

Failure Body::perform(const std::stop_token& stop) {
    const CURLcode code = CurlExchange::perform(stop);
    hasRest_ = hasRest_ || (asksForRest_ && isRest()); // even if nothing of it has come
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
    part_.remove();
    return std::nullopt;
}

bool Body::take(std::string_view bytes) {
    if (!std::exchange(hasBody_, true)) {
        failure_ = reasonToRefuseAnswer();
        if (!failure_)
            continueOrKeep();
    }
    if (!failure_ && !file_.write(bytes)) {
        failure_ = withReason("The file cannot be written", errno);
        part_.remove(); // it takes the room that is missing
    }
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
    reports_.tell([to = &delegate_, received = written_,
                   whole = static_cast<std::uint64_t>(announced) + (hasRest_ ? part_.size() : 0)] {
        to->downloadDidReceive(received, whole);
    });
}

Failure Body::reasonToRefuseAnswer() const {
    if (status() < 200 || status() > 299)
        return "The server has answered with status " + std::to_string(status());
    if (asksForRest_ && status() != 200 && !isRest())
        return "The server has not sent the rest of the file";
    const curl_off_t announced = announcedLength();
    const auto room = file_.freeSpace();
    if (room && announced > 0 && static_cast<std::uint64_t>(announced) > *room)
        return "The file needs " + std::to_string(announced) + " bytes, but the disk has room for " +
               std::to_string(*room);
    return std::nullopt;
}

/// Called at the beginning of the body. A whole answer to the request for the rest is of a changed file.
void Body::continueOrKeep() {
    hasRest_ = asksForRest_ && status() == 206;
    if (hasRest_) {
        file_.adopt(part_.open());
        written_ = reported_ = part_.size();
        reports_.tell([to = &delegate_, kept = part_.size()] { to->downloadDidContinue(kept); });
        return;
    }
    asksForRest_ = false;
    part_.remove();
    if (status() == 200 && announcedLength() > 0 && header("Accept-Ranges") == "bytes" &&
        !validator().empty())
        part_.keep(file_.descriptor(), {validator(), static_cast<std::uint64_t>(announcedLength())});
}

/// Returns whether the answer is exactly what is missing of the same file.
bool Body::isRest() const {
    const auto& [kept, length] = *part_.whole();
    return status() == 206 && (kept == header("ETag") || kept == header("Last-Modified")) &&
           announcedLength() == static_cast<curl_off_t>(length - part_.size()) &&
           header("Content-Range") == "bytes " + std::to_string(part_.size()) + '-' +
                                          std::to_string(length - 1) + '/' + std::to_string(length);
}

/// Returns what no other content of the URL has: its entity tag, unless that is a weak one, or the time of its
/// last change, if that was a minute before the answer at least (RFC 9110, 8.8.2.2). Empty without either.
std::string Body::validator() const {
    constexpr std::size_t longest = 1024;
    std::string tag = header("ETag");
    if (tag.size() > 1 && tag.size() < longest && tag.starts_with('"') && tag.ends_with('"'))
        return tag;
    const std::string changed = header("Last-Modified");
    const std::time_t changeTime = curl_getdate(changed.c_str(), nullptr);
    const bool isOld = changeTime > 0 && changeTime + 60 <= curl_getdate(header("Date").c_str(), nullptr);
    return isOld && changed.size() < longest ? changed : std::string();
}

/// Returns the value of a header of the answer, or an empty text if there is none.
std::string Body::header(const char* name) const {
    curl_header* found = nullptr;
    return curl_easy_header(handle(), name, 0, CURLH_HEADER, -1, &found) == CURLHE_OK ? found->value : "";
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
    return announcedLength() < 0 && version < CURL_HTTP_VERSION_2_0 && header("Transfer-Encoding").empty();
}

void download(const DownloadRequest& request, DownloadDelegate& delegate, CurlHandle& handle,
              const Reports& reports, const std::stop_token& stop) {
    KeptPart part(request.url, nameOf(request.destination));
    Failure failure;
    for (bool isFirst = true, isDone = false; !isDone; isFirst = false) {
        Body body(request, delegate, handle, reports, part);
        failure = body.prepare();
        if (!failure && isFirst)
            reports.tell([&delegate] { delegate.downloadDidBegin(); });
        if (!failure)
            failure = body.perform(stop);
        isDone = !body.mustBeginAfresh();
        if (!isDone)
            part.remove();
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
