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

/// A handle of libcurl. libcurl stays initialised while any handle exists.
using CurlHandle = std::unique_ptr<CURL, void (*)(CURL*)>;

/// Throws Exception if no handle can be created. Main thread only.
CurlHandle makeCurlHandle();

/// One request and its answer: what all kinds of request have in common. The handle refers to this object
/// while it is in use.
class CurlExchange {
public:
    CurlExchange(std::string url, std::uint64_t maximumBodySize);

    /// Counts bytes of the body as they arrive. Returns false if the body is too long.
    bool count(std::size_t size);

    /// Returns in plain words why the request ended with this code, which must not be CURLE_OK.
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

/// Sets the options of a fresh handle. Starts with those that all requests share: HTTPS only, even after a
/// redirect, and verified certificates.
class CurlOptions {
public:
    CurlOptions(CURL* handle, CurlExchange& exchange);

    template <typename Value>
    void set(CURLoption option, Value value) {
        accepted_ = accepted_ && curl_easy_setopt(handle_, option, value) == CURLE_OK;
    }

    /// Sets a timeout in milliseconds: at least one, because 0 would mean no limit or libcurl's default.
    void setTimeout(CURLoption option, std::chrono::milliseconds timeout);

    /// Sets how long the request may go without a byte, rounded up to whole seconds.
    void setStallTimeout(std::chrono::milliseconds timeout);

    /// Adds a header line in libcurl's notation: "Name: value"; "Name;" for an empty value; "Name:" to
    /// suppress one that libcurl sends by itself, unless it was added before.
    void addHeader(const std::string& line);

    /// Decodes an answer that the server has compressed, although the request does not ask for compression.
    void decodeAnswer();

    /// Returns false if libcurl does not know one of the options, or has run out of memory.
    bool accepted() const { return accepted_; }

private:
    CURL* handle_;
    CurlExchange& exchange_;
    bool accepted_ = true;
};

using Failure = std::optional<std::string>; ///< a description; nothing if all went well

/// Returns the text of a header without the characters that could start another one.
std::string withoutControls(std::string text);

inline constexpr const char* optionsRefused = "libcurl refuses its settings";

} // namespace join::platform
