#include "platform/linux/CurlHttpClient.h"

#include "platform/Exception.h"
#include "platform/linux/HttpUrl.h"

#include <curl/curl.h>
#include <openssl/err.h>
#include <openssl/ssl.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <string_view>
#include <utility>

namespace join::platform {

namespace {

/// What the callbacks of one request share.
struct Exchange {
    explicit Exchange(const HttpRequest& of) : request(of) {}

    const HttpRequest& request;
    std::string body;
    bool tooLong = false;
    std::string unreadableCertificates; ///< the file that SSL_CERT_FILE names, when it could not be read
    std::array<char, CURL_ERROR_SIZE> curlError{};
};

std::size_t receiveBody(char* bytes, std::size_t /*always 1*/, std::size_t size, void* user) noexcept {
    auto& exchange = *static_cast<Exchange*>(user);
    exchange.tooLong = size > exchange.request.maximumBodySize - exchange.body.size();
    if (exchange.tooLong)
        return CURL_WRITEFUNC_ERROR;
    exchange.body.append(bytes, size);
    return size;
}

/// Called for every new connection, after libcurl has loaded the system's certificates.
CURLcode addUserCertificates(CURL* /*handle*/, void* sslContext, void* user) noexcept {
    const char* file = std::getenv("SSL_CERT_FILE");
    if (file && *file &&
        SSL_CTX_load_verify_locations(static_cast<SSL_CTX*>(sslContext), file, nullptr) != 1) {
        static_cast<Exchange*>(user)->unreadableCertificates = file;
        ERR_clear_error(); // libcurl would take it for an error of the connection
    }
    return CURLE_OK;
}

/// Sets every option of the request; false when libcurl does not know one, or has no memory left.
bool configure(CURL* handle, Exchange& exchange) {
    const HttpRequest& request = exchange.request;
    const auto timeout =
        std::clamp<std::int64_t>(request.timeout.count(), 1, std::numeric_limits<int>::max());
    const auto maximumSize = static_cast<curl_off_t>(
        std::min<std::uint64_t>(request.maximumBodySize, std::numeric_limits<curl_off_t>::max()));
    bool done = true;
    const auto set = [&](CURLoption option, auto value) {
        done = done && curl_easy_setopt(handle, option, value) == CURLE_OK;
    };
    set(CURLOPT_URL, request.url.c_str());
    set(CURLOPT_PROTOCOLS_STR, "https");
    set(CURLOPT_REDIR_PROTOCOLS_STR, "https");
    set(CURLOPT_FOLLOWLOCATION, 1L);
    set(CURLOPT_MAXREDIRS, 20L);
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    set(CURLOPT_SSL_CTX_FUNCTION, &addUserCertificates);
    set(CURLOPT_SSL_CTX_DATA, &exchange);
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_TIMEOUT_MS, static_cast<long>(timeout));
    set(CURLOPT_MAXFILESIZE_LARGE, maximumSize);
    set(CURLOPT_WRITEFUNCTION, &receiveBody);
    set(CURLOPT_WRITEDATA, &exchange);
    set(CURLOPT_ERRORBUFFER, exchange.curlError.data());
    return done;
}

std::string descriptionOf(CURLcode code, const Exchange& exchange) {
    if (exchange.tooLong || code == CURLE_FILESIZE_EXCEEDED)
        return "The answer is longer than " + std::to_string(exchange.request.maximumBodySize) + " bytes";
    std::string text = exchange.curlError.front() ? exchange.curlError.data() : curl_easy_strerror(code);
    if (code == CURLE_PEER_FAILED_VERIFICATION && !exchange.unreadableCertificates.empty())
        text += " (the certificates in SSL_CERT_FILE, " + exchange.unreadableCertificates +
                ", could not be read)";
    return text;
}

HttpReply failed(std::string description, const HttpRequest& request) {
    return {.status = {}, .body = {}, .error = HttpError{std::move(description), request.url}};
}

CURL* makeHandle() {
    if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) // counts its calls
        throw Exception("libcurl cannot be initialised");
    return curl_easy_init();
}

void freeHandle(CURL* handle) {
    curl_easy_cleanup(handle);
    curl_global_cleanup();
}

} // namespace

CurlHttpClient::CurlHttpClient() : handle_(makeHandle(), freeHandle) {
    if (!handle_)
        throw Exception("libcurl has no memory for a connection");
}

HttpReply CurlHttpClient::get(const HttpRequest& request) {
    if (auto reason = reasonToRefuseUrl(request.url))
        return failed(std::move(*reason), request);

    Exchange exchange{request};
    curl_easy_reset(handle_.get()); // keeps the connections
    if (!configure(handle_.get(), exchange))
        return failed("libcurl refuses its settings", request);
    const CURLcode code = curl_easy_perform(handle_.get());
    long status = 0;
    curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &status);
    curl_easy_reset(handle_.get()); // it must not keep pointers to what ends here
    if (code != CURLE_OK)
        return failed(descriptionOf(code, exchange), request);
    return {.status = static_cast<int>(status), .body = std::move(exchange.body), .error = {}};
}

} // namespace join::platform
