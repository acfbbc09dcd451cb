#include "platform/linux/http/CurlExchange.h"

#include "platform/Exception.h"
#include "platform/linux/http/HttpUrl.h"

#include <openssl/ssl.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>

namespace join::platform {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int maximumRedirects = 20;
constexpr std::uint64_t mostOverhead = std::uint64_t{16} << 20; ///< of a short answer, in bytes

/// Returns whether the environment holds the password of a proxy. libcurl repeats a proxy's address in its
/// errors, and takes a part of an unusual password for the proxy's name.
bool isProxySecret() {
    return std::ranges::any_of(
        std::to_array({"https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"}), [](const char* name) {
            const char* proxy = std::getenv(name);
            return proxy && std::string_view(proxy).find('@') != std::string_view::npos;
        });
}

/// Returns a part of a parsed URL, empty if there is none.
std::string partOf(CURLU* url, CURLUPart part) {
    char* text = nullptr;
    curl_url_get(url, part, &text, 0);
    const std::unique_ptr<char, void (*)(void*)> owned(text, curl_free);
    return text ? text : "";
}

} // namespace

CurlHandle::Library::Library() {
    if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) // counts its calls
        throw Exception("libcurl cannot be initialised");
}

CurlHandle::CurlHandle(const TrustPolicy& policy)
    : policy_(policy), multi_(curl_multi_init(), curl_multi_cleanup),
      easy_(curl_easy_init(), curl_easy_cleanup) {
    if (!multi_ || !easy_)
        throw Exception("libcurl has no memory for a connection");
}

CURLcode CurlHandle::perform(const std::stop_token& stop) {
    if (curl_multi_add_handle(multi_.get(), get()) != CURLM_OK)
        return CURLE_OUT_OF_MEMORY;
    constexpr int longestWait = 1000; // in milliseconds
    const std::stop_callback wake(stop, [this] { curl_multi_wakeup(multi_.get()); });
    int running = 1;
    while (!stop.stop_requested() && curl_multi_perform(multi_.get(), &running) == CURLM_OK && running > 0)
        if (curl_multi_poll(multi_.get(), nullptr, 0, longestWait, nullptr) != CURLM_OK)
            break;
    int left = 0;
    const CURLMsg* end = curl_multi_info_read(multi_.get(), &left);
    const CURLcode code = end ? end->data.result : CURLE_ABORTED_BY_CALLBACK;
    curl_multi_remove_handle(multi_.get(), get());
    return code;
}

CurlExchange::CurlExchange(CurlHandle& handle, std::string url, std::uint64_t maximumBodySize,
                           std::chrono::milliseconds timeout)
    : failure_(reasonToRefuseUrl(url)), handle_(handle), url_(std::move(url)),
      maximumBodySize_(maximumBodySize), timeout_(timeout) {
    aimAt(url_.c_str());
    set(CURLOPT_PROTOCOLS_STR, "https");
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    set(CURLOPT_CAINFO, static_cast<const char*>(nullptr)); // left to CurlTrust
    set(CURLOPT_SSL_CTX_FUNCTION, &CurlTrust::prepare);
    set(CURLOPT_SSL_CTX_DATA, &trust_);
    set(CURLOPT_NOSIGNAL, 1L);
    // Without this, a request that ends during the lookup of its host's name would wait for the lookup, half
    // a minute or more. The lookup's thread frees its own resources when it is done.
    set(CURLOPT_QUICK_EXIT, 1L);
    set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(maximumBodySize_));
    set(CURLOPT_ERRORBUFFER, curlError_.data());
    set(CURLOPT_WRITEFUNCTION, &receive);
    set(CURLOPT_WRITEDATA, this);
    set(CURLOPT_XFERINFOFUNCTION, &watch);
    set(CURLOPT_XFERINFODATA, this);
    set(CURLOPT_NOPROGRESS, 0L);
}

/// The handle must not keep pointers to this object.
CurlExchange::~CurlExchange() { curl_easy_reset(handle()); }

CURLcode CurlExchange::perform(const std::stop_token& stop) {
    const auto deadline = Clock::now() + timeout_;
    for (int redirects = 0;; ++redirects) {
        set(CURLOPT_URL, url_.c_str());
        setTimeout(CURLOPT_TIMEOUT_MS, std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()));
        if (failure_ || !accepted_)
            return CURLE_FAILED_INIT;
        const CURLcode code = handle_.perform(stop);
        const char* location = redirection();
        if (code != CURLE_OK || !location)
            return code;
        aimAt(location);
        url_ = partOf(target_.get(), CURLUPART_URL);
        if (redirects == maximumRedirects)
            failure_ = "There are more than " + std::to_string(maximumRedirects) + " redirects";
    }
}

/// Returns where the latest answer leads, perhaps relative to the latest URL; nullptr unless it is a redirect
/// to be followed.
const char* CurlExchange::redirection() const {
    curl_header* location = nullptr;
    const bool leads = followsRedirects_ && status() >= 300 && status() <= 399 &&
                       curl_easy_header(handle(), "Location", 0, CURLH_HEADER, -1, &location) == CURLHE_OK;
    return leads ? location->value : nullptr;
}

/// Reads the location as libcurl itself would: libcurl could follow it too, but would ask nobody.
void CurlExchange::aimAt(const char* location) {
    constexpr unsigned asFound = CURLU_URLENCODE | CURLU_ALLOW_SPACE | CURLU_NON_SUPPORT_SCHEME;
    const CURLUcode code = curl_url_set(target_.get(), CURLUPART_URL, location, asFound);
    if (!failure_ && code != CURLUE_OK)
        failure_ = std::string("The URL leads nowhere: ") + curl_url_strerror(code);
    if (!failure_)
        failure_ = handle_.policy().reasonToRefuse(partOf(target_.get(), CURLUPART_HOST));
}

std::string CurlExchange::descriptionOf(CURLcode code) const {
    if (failure_)
        return *failure_;
    if (isTooLong_ || code == CURLE_FILESIZE_EXCEEDED)
        return "The answer is longer than " + std::to_string(maximumBodySize_) + " bytes";
    std::string text = curlError_.front() && !isProxySecret() ? curlError_.data() : curl_easy_strerror(code);
    switch (code) {
    case CURLE_UNSUPPORTED_PROTOCOL: // only after a redirect: the first URL has been checked
        return "A redirect leaves HTTPS: " + text;
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
    case CURLE_RECV_ERROR: // which of them occurs depends on the versions of the libraries
        return "No whole answer has come: " + text;
    case CURLE_PEER_FAILED_VERIFICATION:
        return text + trust_.remark();
    default:
        return text;
    }
}

std::size_t CurlExchange::receive(char* bytes, std::size_t /*one*/, std::size_t size,
                                  void* exchange) noexcept {
    auto& self = *static_cast<CurlExchange*>(exchange);
    if (self.redirection())
        return size;
    const std::uint64_t room = self.maximumBodySize_ - self.received_;
    const std::string_view taken = std::string_view(bytes, size).substr(0, room);
    self.received_ += taken.size();
    self.isTooLong_ = size > room;
    return self.take(taken) && !self.isTooLong_ ? size : CURL_WRITEFUNC_ERROR;
}

/// libcurl calls this again and again while something is expected or arrives, and one last time before it
/// closes the connection.
int CurlExchange::watch(void* exchange, curl_off_t /*total*/, curl_off_t /*now*/, curl_off_t /*sendTotal*/,
                        curl_off_t /*sentNow*/) noexcept {
    auto& self = *static_cast<CurlExchange*>(exchange);
    curl_tlssessioninfo* session = nullptr;
    curl_easy_getinfo(self.handle(), CURLINFO_TLS_SSL_PTR, &session);
    if (session && session->internals)
        self.noteTls(static_cast<SSL*>(session->internals));
    const std::uint64_t maximum = 2 * self.maximumBodySize_ + mostOverhead;
    if (self.traffic_ > maximum)
        self.failure_ = "The server has sent more than " + std::to_string(maximum) + " bytes";
    self.tick();
    return self.failure_ ? 1 : 0;
}

/// The connection may have served earlier requests: only what it brings from now on counts.
void CurlExchange::noteTls(SSL* tls) {
    const std::uint64_t brought = BIO_number_read(SSL_get_rbio(tls));
    if (tls == std::exchange(tls_, tls) && brought > broughtByTls_)
        traffic_ += brought - broughtByTls_;
    broughtByTls_ = brought;
    hasEndOfTls_ = (SSL_get_shutdown(tls) & SSL_RECEIVED_SHUTDOWN) != 0;
}

void CurlExchange::setTimeout(CURLoption option, std::chrono::milliseconds timeout) {
    set(option,
        static_cast<long>(std::clamp<std::int64_t>(timeout.count(), 1, std::numeric_limits<int>::max())));
}

void CurlExchange::setStallTimeout(std::chrono::milliseconds timeout) {
    const auto seconds = std::chrono::ceil<std::chrono::seconds>(timeout);
    setTimeout(CURLOPT_CONNECTTIMEOUT_MS, timeout);
    set(CURLOPT_LOW_SPEED_LIMIT, 1L); // bytes per second
    set(CURLOPT_LOW_SPEED_TIME, std::max(1L, static_cast<long>(seconds.count())));
}

void CurlExchange::addHeader(const std::string& line) {
    curl_slist* longer = curl_slist_append(headers_.get(), line.c_str());
    accepted_ = accepted_ && longer;
    if (!longer)
        return;
    (void)headers_.release(); // the longer list begins with it
    headers_.reset(longer);
    set(CURLOPT_HTTPHEADER, longer);
}

void CurlExchange::decodeAnswer() {
    set(CURLOPT_ACCEPT_ENCODING, ""); // all that libcurl knows
    addHeader("Accept-Encoding:");
}

long CurlExchange::status() const {
    long status = 0;
    curl_easy_getinfo(handle(), CURLINFO_RESPONSE_CODE, &status);
    return status;
}

std::string withoutControls(std::string text) {
    std::erase_if(text, [](unsigned char c) { return c < ' ' || c == '\x7F'; });
    return text;
}

} // namespace join::platform
