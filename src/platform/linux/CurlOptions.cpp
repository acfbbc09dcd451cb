#include "platform/linux/CurlOptions.h"

#include "platform/Exception.h"

#include <openssl/err.h>
#include <openssl/ssl.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <system_error>
#include <utility>

namespace join::platform {

namespace {

void freeHandle(CURL* handle) {
    curl_easy_cleanup(handle);
    curl_global_cleanup();
}

/// Whether libcurl's folder of certificates holds any under the hashes of their names, as c_rehash(1) makes
/// them.
bool hasCertificatesByHash() {
    const char* folder = curl_version_info(CURLVERSION_NOW)->capath;
    std::error_code error;
    const auto entries =
        folder ? std::filesystem::directory_iterator(folder, error) : std::filesystem::directory_iterator();
    return std::any_of(begin(entries), end(entries), [](const auto& entry) {
        const std::string name = entry.path().filename();
        return name.size() == 10 && name.ends_with(".0") &&
               name.find_first_not_of("0123456789abcdef") == name.size() - 2;
    });
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
    std::string text = curlError_.front() ? curlError_.data() : curl_easy_strerror(code);
    if (code == CURLE_PEER_FAILED_VERIFICATION && !unreadableCertificates_.empty())
        text += " (the certificates in SSL_CERT_FILE, " + unreadableCertificates_ + ", could not be read)";
    return text;
}

/// Called for every new connection, after libcurl has loaded the system's certificates.
CURLcode CurlExchange::addUserCertificates(CURL* /*handle*/, void* sslContext, void* exchange) noexcept {
    const char* file = std::getenv("SSL_CERT_FILE");
    if (file && *file &&
        SSL_CTX_load_verify_locations(static_cast<SSL_CTX*>(sslContext), file, nullptr) != 1) {
        static_cast<CurlExchange*>(exchange)->unreadableCertificates_ = file;
        ERR_clear_error(); // libcurl would take it for an error of the connection
    }
    return CURLE_OK;
}

CurlOptions::CurlOptions(CURL* handle, CurlExchange& exchange) : handle_(handle) {
    constexpr std::uint64_t largest = std::numeric_limits<curl_off_t>::max();
    set(CURLOPT_URL, exchange.url_.c_str());
    set(CURLOPT_PROTOCOLS_STR, "https");
    set(CURLOPT_REDIR_PROTOCOLS_STR, "https");
    set(CURLOPT_FOLLOWLOCATION, 1L);
    set(CURLOPT_MAXREDIRS, 20L);
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    // Of a folder only the certificates that are asked for are read. Reading the bundle of all of them, which
    // holds the same, takes longer than the rest of a request.
    static const bool hasFolder = hasCertificatesByHash();
    if (hasFolder)
        set(CURLOPT_CAINFO, static_cast<const char*>(nullptr));
    set(CURLOPT_SSL_CTX_FUNCTION, &CurlExchange::addUserCertificates);
    set(CURLOPT_SSL_CTX_DATA, &exchange);
    set(CURLOPT_NOSIGNAL, 1L);
    // A request that ends while its host's name is looked up would otherwise wait for that, half a minute or
    // more. The thread that looks it up frees what it has when it is done.
    set(CURLOPT_QUICK_EXIT, 1L);
    set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(std::min(exchange.maximumBodySize_, largest)));
    set(CURLOPT_ERRORBUFFER, exchange.curlError_.data());
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
