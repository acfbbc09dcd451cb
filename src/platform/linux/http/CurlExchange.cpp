#include "platform/linux/http/CurlExchange.h"

#include "platform/Exception.h"
#include "platform/linux/http/HttpUrl.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace join::platform {

namespace {

/// Returns whether the environment holds the password of a proxy. libcurl repeats a proxy's address in its
/// errors, and takes a part of an unusual password for the proxy's name.
bool isProxySecret() {
    return std::ranges::any_of(
        std::to_array({"https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"}), [](const char* name) {
            const char* proxy = std::getenv(name);
            return proxy && std::string_view(proxy).find('@') != std::string_view::npos;
        });
}

} // namespace

CurlHandle::Library::Library() {
    if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) // counts its calls
        throw Exception("libcurl cannot be initialised");
}

CurlHandle::CurlHandle()
    : multi_(curl_multi_init(), curl_multi_cleanup), easy_(curl_easy_init(), curl_easy_cleanup) {
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

CurlExchange::CurlExchange(CurlHandle& handle, const std::string& url, std::uint64_t maximumBodySize)
    : failure_(reasonToRefuseUrl(url)), handle_(handle), maximumBodySize_(maximumBodySize) {
    constexpr std::uint64_t largest = std::numeric_limits<curl_off_t>::max();
    set(CURLOPT_URL, url.c_str());
    set(CURLOPT_PROTOCOLS_STR, "https");
    set(CURLOPT_REDIR_PROTOCOLS_STR, "https");
    set(CURLOPT_FOLLOWLOCATION, 1L);
    set(CURLOPT_MAXREDIRS, 20L);
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    set(CURLOPT_CAINFO, static_cast<const char*>(nullptr)); // left to CurlTrust
    set(CURLOPT_SSL_CTX_FUNCTION, &CurlTrust::prepare);
    set(CURLOPT_SSL_CTX_DATA, &trust_);
    set(CURLOPT_NOSIGNAL, 1L);
    // Without this, a request that ends during the lookup of its host's name would wait for the lookup, half
    // a minute or more. The lookup's thread frees its own resources when it is done.
    set(CURLOPT_QUICK_EXIT, 1L);
    set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(std::min(maximumBodySize_, largest)));
    set(CURLOPT_ERRORBUFFER, curlError_.data());
    set(CURLOPT_WRITEFUNCTION, &receive);
    set(CURLOPT_WRITEDATA, this);
}

/// The handle must not keep pointers to this object.
CurlExchange::~CurlExchange() { curl_easy_reset(handle()); }

CURLcode CurlExchange::perform(const std::stop_token& stop) {
    if (failure_ || !accepted_)
        return CURLE_FAILED_INIT;
    return handle_.perform(stop);
}

std::string CurlExchange::descriptionOf(CURLcode code) const {
    if (failure_)
        return *failure_;
    const std::string text =
        curlError_.front() && !isProxySecret() ? curlError_.data() : curl_easy_strerror(code);
    switch (code) {
    case CURLE_FILESIZE_EXCEEDED:
        return "The answer is longer than " + std::to_string(maximumBodySize_) + " bytes";
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
    self.received_ += size;
    if (self.received_ > self.maximumBodySize_)
        self.failure_ = self.descriptionOf(CURLE_FILESIZE_EXCEEDED);
    return !self.failure_ && self.take({bytes, size}) ? size : CURL_WRITEFUNC_ERROR;
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
    set(CURLOPT_ACCEPT_ENCODING, "gzip, deflate");
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
