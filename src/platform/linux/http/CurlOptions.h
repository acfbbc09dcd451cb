#pragma once

#include "platform/linux/http/CurlTrust.h"

#include <curl/curl.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
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

    std::string url_;
    std::uint64_t maximumBodySize_;
    std::uint64_t received_ = 0;
    bool tooLong_ = false;
    CurlTrust trust_;
    std::unique_ptr<curl_slist, void (*)(curl_slist*)> headers_{nullptr, curl_slist_free_all};
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

    /// Adds a header line in libcurl's notation: "Name: value", "Name;" for an empty value, "Name:" to leave
    /// out one that libcurl sends on its own unless it was added before.
    void addHeader(const std::string& line);

    /// Gives the answer decoded when its server has compressed it, although nobody asks for that.
    void decodeAnswer();

    /// False when libcurl does not know one of the options, or has no memory left.
    bool accepted() const { return accepted_; }

private:
    CURL* handle_;
    CurlExchange& exchange_;
    bool accepted_ = true;
};

using Failure = std::optional<std::string>; ///< a description; nothing when all went well

/// The text of a header without what could begin another one.
std::string withoutControls(std::string text);

inline constexpr const char* optionsRefused = "libcurl refuses its settings";

} // namespace join::platform
