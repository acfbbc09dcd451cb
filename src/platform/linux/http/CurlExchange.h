#pragma once

#include "platform/TrustPolicy.h"
#include "platform/linux/http/CurlTrust.h"

#include <curl/curl.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>

namespace join::platform {

/// A handle of libcurl with its connections, which are kept for the next request, and the servers to which they
/// may lead.
class CurlHandle {
public:
    /// Throws Exception if libcurl cannot provide one. One thread at a time. The policy must outlive the handle.
    explicit CurlHandle(const TrustPolicy& policy);

    CURL* get() const { return easy_.get(); }
    const TrustPolicy& policy() const { return policy_; }

    /// Performs the request that has been set. Can be stopped at any time.
    CURLcode perform(const std::stop_token& stop);

private:
    struct Library { ///< stays initialised while any handle exists
        Library();
        ~Library() { curl_global_cleanup(); }
        Library(const Library&) = delete;
        Library& operator=(const Library&) = delete;
    };

    const TrustPolicy& policy_;
    Library library_;
    std::unique_ptr<CURLM, CURLMcode (*)(CURLM*)> multi_;
    std::unique_ptr<CURL, void (*)(CURL*)> easy_;
};

using Failure = std::optional<std::string>; ///< a description; nothing if all went well

/// One request, its redirects and its answer: what all kinds of request have in common. HTTPS only, verified
/// certificates, and allowed servers, even after a redirect. The handle is used by one exchange at a time.
class CurlExchange {
public:
    /// The timeout is for everything together. All bytes of the connections count, not only the body's: an
    /// honest server needs less than twice the longest body and 16 MiB.
    CurlExchange(CurlHandle& handle, std::string url, std::uint64_t maximumBodySize,
                 std::chrono::milliseconds timeout);
    CurlExchange(const CurlExchange&) = delete;
    CurlExchange& operator=(const CurlExchange&) = delete;

protected:
    virtual ~CurlExchange();

    /// Takes bytes of the body as they arrive, up to the maximum; a redirect has none. Returns false to end the
    /// exchange.
    virtual bool take(std::string_view bytes) = 0;

    /// Called during the exchange, whenever something happens and at least once a second.
    virtual void tick() noexcept {}

    /// Sends the request and waits for the end of the exchange.
    CURLcode perform(const std::stop_token& stop = {});

    /// Returns in plain words why the exchange ended with this code, which must not be CURLE_OK.
    std::string descriptionOf(CURLcode code) const;

    template <typename Value>
    void set(CURLoption option, Value value) {
        accepted_ = accepted_ && curl_easy_setopt(handle(), option, value) == CURLE_OK;
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

    CURL* handle() const { return handle_.get(); }

    /// Returns the status of the latest answer, also of an interim one; 0 before there is one.
    long status() const;

    Failure failure_; ///< why the exchange cannot begin, or cannot go on
    bool followsRedirects_ = true;
    bool isTooLong_ = false;   ///< more than the longest body has come
    bool hasEndOfTls_ = false; ///< on the connection used last

private:
    static std::size_t receive(char* bytes, std::size_t one, std::size_t size, void* exchange) noexcept;
    static int watch(void* exchange, curl_off_t total, curl_off_t now, curl_off_t sendTotal,
                     curl_off_t sentNow) noexcept;
    const char* redirection() const;
    void aimAt(const char* location);
    void noteTls(ssl_st* tls);

    CurlHandle& handle_;
    std::string url_;                                                               ///< the latest one
    std::unique_ptr<CURLU, void (*)(CURLU*)> target_{curl_url(), curl_url_cleanup}; ///< the same, parsed
    std::uint64_t maximumBodySize_;
    std::chrono::milliseconds timeout_;
    std::uint64_t received_ = 0;     ///< bytes of the body
    std::uint64_t traffic_ = 0;      ///< all bytes that the connections have brought
    const ssl_st* tls_ = nullptr;    ///< the latest connection
    std::uint64_t broughtByTls_ = 0; ///< all bytes that it has brought, also before this exchange
    bool accepted_ = true;           ///< libcurl knows all options and has had memory for them
    CurlTrust trust_;
    std::unique_ptr<curl_slist, void (*)(curl_slist*)> headers_{nullptr, curl_slist_free_all};
    std::array<char, CURL_ERROR_SIZE> curlError_{};
};

/// Returns the text of a header without the characters that could start another one.
std::string withoutControls(std::string text);

} // namespace join::platform
