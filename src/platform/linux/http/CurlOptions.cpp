#include "platform/linux/http/CurlOptions.h"

#include "platform/Exception.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

namespace join::platform {

namespace {

void freeHandle(CURL* handle) {
    curl_easy_cleanup(handle);
    curl_global_cleanup();
}

/// Returns the user names and passwords of the HTTPS proxies that libcurl finds in the environment.
std::vector<std::string> proxyUsers() {
    std::vector<std::string> users;
    for (const char* name : {"https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"}) {
        const char* value = std::getenv(name);
        const std::string_view proxy = value ? value : "";
        const auto scheme = proxy.find("://");
        const auto begin = scheme == std::string_view::npos ? 0 : scheme + 3;
        const auto end = proxy.rfind('@');
        if (end != std::string_view::npos && end > begin)
            users.emplace_back(proxy.substr(begin, end - begin));
    }
    return users;
}

/// Returns libcurl's error without proxy passwords, which it repeats if it cannot parse the address.
std::string withoutPasswords(std::string text, CURLcode code) {
    for (const std::string& user : proxyUsers()) {
        // After one of these, libcurl looks for neither user nor host: it takes a part of the password for
        // the proxy's name.
        if (user.find_first_of("/?#") != std::string::npos)
            return curl_easy_strerror(code);
        for (auto at = text.find(user); at != std::string::npos; at = text.find(user, at + 3))
            text.replace(at, user.size(), "***");
    }
    return text;
}

} // namespace

CurlHandle makeCurlHandle() {
    if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) // counts its calls
        throw Exception("libcurl cannot be initialised");
    CurlHandle handle(curl_easy_init(), freeHandle);
    if (handle)
        return handle;
    curl_global_cleanup();
    throw Exception("libcurl has no memory for a connection");
}

CurlExchange::CurlExchange(std::string url, std::uint64_t maximumBodySize)
    : url_(std::move(url)), maximumBodySize_(maximumBodySize) {}

bool CurlExchange::count(std::size_t size) {
    tooLong_ = size > maximumBodySize_ - received_;
    if (!tooLong_)
        received_ += size;
    return !tooLong_;
}

std::string CurlExchange::descriptionOf(CURLcode code) const {
    if (tooLong_ || code == CURLE_FILESIZE_EXCEEDED)
        return "The answer is longer than " + std::to_string(maximumBodySize_) + " bytes";
    const std::string text =
        withoutPasswords(curlError_.front() ? curlError_.data() : curl_easy_strerror(code), code);
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

CurlOptions::CurlOptions(CURL* handle, CurlExchange& exchange) : handle_(handle), exchange_(exchange) {
    constexpr std::uint64_t largest = std::numeric_limits<curl_off_t>::max();
    set(CURLOPT_URL, exchange.url_.c_str());
    set(CURLOPT_PROTOCOLS_STR, "https");
    set(CURLOPT_REDIR_PROTOCOLS_STR, "https");
    set(CURLOPT_FOLLOWLOCATION, 1L);
    set(CURLOPT_MAXREDIRS, 20L);
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    set(CURLOPT_CAINFO, static_cast<const char*>(nullptr)); // left to CurlTrust
    set(CURLOPT_SSL_CTX_FUNCTION, &CurlTrust::prepare);
    set(CURLOPT_SSL_CTX_DATA, &exchange.trust_);
    set(CURLOPT_NOSIGNAL, 1L);
    // Without this, a request that ends during the lookup of its host's name would wait for the lookup, half
    // a minute or more. The lookup's thread frees its own resources when it is done.
    set(CURLOPT_QUICK_EXIT, 1L);
    set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(std::min(exchange.maximumBodySize_, largest)));
    set(CURLOPT_ERRORBUFFER, exchange.curlError_.data());
}

void CurlOptions::addHeader(const std::string& line) {
    curl_slist* longer = curl_slist_append(exchange_.headers_.get(), line.c_str());
    accepted_ = accepted_ && longer;
    if (!longer)
        return;
    (void)exchange_.headers_.release(); // the longer list begins with it
    exchange_.headers_.reset(longer);
    set(CURLOPT_HTTPHEADER, longer);
}

void CurlOptions::decodeAnswer() {
    set(CURLOPT_ACCEPT_ENCODING, "gzip, deflate");
    addHeader("Accept-Encoding:");
}

void CurlOptions::setTimeout(CURLoption option, std::chrono::milliseconds timeout) {
    set(option,
        static_cast<long>(std::clamp<std::int64_t>(timeout.count(), 1, std::numeric_limits<int>::max())));
}

void CurlOptions::setStallTimeout(std::chrono::milliseconds timeout) {
    const auto seconds = std::chrono::ceil<std::chrono::seconds>(timeout);
    setTimeout(CURLOPT_CONNECTTIMEOUT_MS, timeout);
    set(CURLOPT_LOW_SPEED_LIMIT, 1L); // bytes per second
    set(CURLOPT_LOW_SPEED_TIME, std::max(1L, static_cast<long>(seconds.count())));
}

std::string withoutControls(std::string text) {
    std::erase_if(text, [](unsigned char c) { return c < ' ' || c == '\x7F'; });
    return text;
}

} // namespace join::platform
