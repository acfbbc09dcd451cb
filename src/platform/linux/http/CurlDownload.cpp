#include "platform/linux/http/CurlTransfer.h"

#include "platform/linux/files/StagedFile.h"

#include <openssl/ssl.h>

#include <cerrno>
#include <string_view>
#include <system_error>
#include <utility>

namespace join::platform {

namespace {

using Report = DelegateReport<DownloadDelegate>;

constexpr long bufferSize = 256L << 10;

std::string withReason(const std::string& text, int error) {
    return text + ": " + std::generic_category().message(error);
}

/// Returns the length in bytes, or -1 if none is announced.
curl_off_t announcedLength(CURL* handle) {
    curl_off_t length = -1;
    curl_easy_getinfo(handle, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
    return length;
}

/// Returns whether only the end of the connection marks the end of the body (RFC 9112, 6.3).
bool endsWithConnection(CURL* handle) {
    long version = CURL_HTTP_VERSION_NONE;
    curl_easy_getinfo(handle, CURLINFO_HTTP_VERSION, &version);
    curl_header* coding = nullptr;
    return announcedLength(handle) < 0 && version < CURL_HTTP_VERSION_2_0 &&
           curl_easy_header(handle, "Transfer-Encoding", 0, CURLH_HEADER, -1, &coding) != CURLHE_OK;
}

/// Receives one body into its file.
class Body {
public:
    Body(const DownloadRequest& request, CURL* handle)
        : request_(request), handle_(handle), exchange_(request.url, maximumDownloadSize),
          file_(request.destination) {}

    Failure prepare();

    /// Called when the request has ended with this code. Puts the complete file at its destination.
    Failure conclude(CURLcode code);

private:
    static std::size_t receive(char* bytes, std::size_t one, std::size_t size, void* body) noexcept;
    static int noteEndOfTls(void* body, curl_off_t total, curl_off_t now, curl_off_t sendTotal,
                            curl_off_t sentNow) noexcept;
    bool setOptions();
    Failure reasonToRefuseAnswer() const;
    Failure take(std::string_view bytes);

    const DownloadRequest& request_;
    CURL* handle_;
    CurlExchange exchange_;
    StagedFile file_;
    bool hasBody_ = false;
    bool hasEndOfTls_ = false; ///< for the connection used last
    Failure failure_;          ///< found while the body arrived
};

Failure Body::prepare() {
    if (!file_.open())
        return withReason("A file cannot be made at " + request_.destination, errno);
    if (!setOptions())
        return optionsRefused;
    return std::nullopt;
}

bool Body::setOptions() {
    CurlOptions options(handle_, exchange_);
    options.set(CURLOPT_USERAGENT, withoutControls(request_.userAgent).c_str());
    options.setStallTimeout(request_.stallTimeout);
    options.set(CURLOPT_BUFFERSIZE, bufferSize);
    options.set(CURLOPT_WRITEFUNCTION, &receive);
    options.set(CURLOPT_WRITEDATA, this);
    options.set(CURLOPT_XFERINFOFUNCTION, &noteEndOfTls);
    options.set(CURLOPT_XFERINFODATA, this);
    options.set(CURLOPT_NOPROGRESS, 0L);
    return options.accepted();
}

std::size_t Body::receive(char* bytes, std::size_t /*one*/, std::size_t size, void* body) noexcept {
    auto& self = *static_cast<Body*>(body);
    if (!self.exchange_.count(size))
        return CURL_WRITEFUNC_ERROR;
    self.failure_ = self.take({bytes, size});
    return self.failure_ ? CURL_WRITEFUNC_ERROR : size;
}

Failure Body::take(std::string_view bytes) {
    if (!std::exchange(hasBody_, true))
        if (auto reason = reasonToRefuseAnswer())
            return reason;
    if (!file_.write(bytes))
        return withReason("The file cannot be written", errno);
    return std::nullopt;
}

Failure Body::reasonToRefuseAnswer() const {
    long status = 0;
    curl_easy_getinfo(handle_, CURLINFO_RESPONSE_CODE, &status);
    if (status < 200 || status > 299)
        return "The server has answered with status " + std::to_string(status);
    const curl_off_t announced = announcedLength(handle_);
    const auto room = file_.freeSpace();
    if (room && announced > 0 && static_cast<std::uint64_t>(announced) > *room)
        return "The file needs " + std::to_string(announced) + " bytes, but the disk has room for " +
               std::to_string(*room);
    return std::nullopt;
}

/// libcurl accepts the end of the network connection as that of TLS, so anyone on the way could shorten a
/// file whose length was not announced. libcurl calls this one last time before it closes the connection.
int Body::noteEndOfTls(void* body, curl_off_t /*total*/, curl_off_t /*now*/, curl_off_t /*sendTotal*/,
                       curl_off_t /*sentNow*/) noexcept {
    auto& self = *static_cast<Body*>(body);
    curl_tlssessioninfo* session = nullptr;
    curl_easy_getinfo(self.handle_, CURLINFO_TLS_SSL_PTR, &session);
    if (session && session->internals)
        self.hasEndOfTls_ = SSL_get_shutdown(static_cast<SSL*>(session->internals)) & SSL_RECEIVED_SHUTDOWN;
    return 0;
}

Failure Body::conclude(CURLcode code) {
    if (failure_)
        return failure_;
    if (code != CURLE_OK)
        return exchange_.descriptionOf(code);
    if (!hasBody_)
        return reasonToRefuseAnswer().value_or("The server has sent no file");
    if (endsWithConnection(handle_) && !hasEndOfTls_)
        return "No whole answer has come: the connection was cut off";
    if (!file_.commit())
        return withReason("The file cannot be put at " + request_.destination, errno);
    return std::nullopt;
}

Failure fetch(const DownloadRequest& request, const Report& report, CURL* handle,
              const std::stop_token& stop) {
    Body body(request, handle);
    if (auto failure = body.prepare())
        return failure;
    report.tell(&DownloadDelegate::downloadDidBegin);
    return body.conclude(perform(handle, stop));
}

void download(const DownloadRequest& request, const Report& report, CURL* handle,
              const std::stop_token& stop) {
    if (auto failure = fetch(request, report, handle, stop))
        report.tell(&DownloadDelegate::downloadDidFail, HttpError{std::move(*failure), request.url});
    else
        report.tell(&DownloadDelegate::downloadDidFinish);
}

} // namespace

std::unique_ptr<Download> startDownload(DownloadRequest request, MainQueue& mainQueue,
                                        DownloadDelegate& delegate) {
    using Transfer = CurlTransfer<Download, DownloadRequest, DownloadDelegate>;
    return std::make_unique<Transfer>(std::move(request), mainQueue, delegate, &download);
}

} // namespace join::platform
