#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace join::platform {

/// A GET request over HTTPS.
struct HttpRequest {
    std::string url;                                    ///< absolute, as RFC 3986 writes it
    std::chrono::milliseconds timeout{60'000};          ///< for the whole exchange
    std::size_t maximumBodySize = std::size_t{1} << 20; ///< bytes; a longer answer is an error
};

struct HttpError {
    std::string description; ///< what went wrong, in plain words
    std::string failingUrl;  ///< the text of the URL that was asked for
};

/// What came of a request. On an error there is neither status nor body.
struct HttpReply {
    std::optional<int> status;
    std::optional<std::string> body;
    std::optional<HttpError> error;
};

/// HTTPS with certificates verified, against the system's and those in the file that SSL_CERT_FILE names.
/// Redirects are followed, never off HTTPS.
class HttpClient {
public:
    virtual ~HttpClient() = default;

    /// Sends the request and blocks until it has been answered, has failed or has taken too long. Text that
    /// is no URL, one of another scheme, or one that names a user (which hides the host from its reader) is
    /// an error and asks nobody. Never throws. Main thread only.
    virtual HttpReply get(const HttpRequest& request) = 0;
};

} // namespace join::platform
