#pragma once

#include <curl/curl.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace join::platform {

/// A handle of libcurl, which keeps libcurl ready as long as it lives.
using CurlHandle = std::unique_ptr<CURL, void (*)(CURL*)>;

/// Throws Exception when there is none to be had. Main thread only.
CurlHandle makeCurlHandle();

/// One request and its answer, as far as every request has them. The handle points here while it is used.
class CurlExchange {
public:
    CurlExchange(std::string url, std::uint64_t maximumBodySize);

    /// Counts bytes of the body that have arrived; false when it is longer than it may be.
    bool count(std::size_t size);

    /// In plain words, why the request has ended with this code, which is not CURLE_OK.
    std::string descriptionOf(CURLcode code) const;

private:
    friend class CurlOptions;
    static CURLcode addUserCertificates(CURL* handle, void* sslContext, void* exchange) noexcept;

    std::string url_;
    std::uint64_t maximumBodySize_;
    std::uint64_t received_ = 0;
    bool tooLong_ = false;
    std::string unreadableCertificates_; ///< the file that SSL_CERT_FILE names, when it could not be read
    std::array<char, CURL_ERROR_SIZE> curlError_{};
};

/// Sets the options of a handle that has none yet, beginning with those of every request: HTTPS alone, also
/// after a redirect, and certificates verified.
class CurlOptions {
public:
    CurlOptions(CURL* handle, CurlExchange& exchange);

    template <typename Value>
    void set(CURLoption option, Value value) {
        accepted_ = accepted_ && curl_easy_setopt(handle_, option, value) == CURLE_OK;
    }

    /// In milliseconds; at least one, since libcurl takes 0 for no limit or its own.
    void setTimeout(CURLoption option, std::chrono::milliseconds timeout);

    /// How long the request may go on without a byte, to the whole second above.
    void setStallTimeout(std::chrono::milliseconds timeout);

    /// False when libcurl does not know one of the options, or has no memory left.
    bool accepted() const { return accepted_; }

private:
    CURL* handle_;
    bool accepted_ = true;
};

/// The text of a header without what could begin another one.
std::string withoutControls(std::string text);

inline constexpr const char* optionsRefused = "libcurl refuses its settings";

} // namespace join::platform
