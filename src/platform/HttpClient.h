#pragma once

#include "platform/FileManager.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace join::platform {

/// A GET request over HTTPS.
struct HttpRequest {
    std::string url;                                    ///< absolute, in the syntax of RFC 3986
    std::chrono::milliseconds timeout{60'000};          ///< for the whole exchange
    std::size_t maximumBodySize = std::size_t{1} << 20; ///< in bytes; a longer answer is an error
};

struct HttpError {
    std::string description; ///< what went wrong, in plain words
    std::string failingUrl;  ///< the requested URL, as given
};

/// The result of a request. After an error there is neither status nor body.
struct HttpReply {
    std::optional<int> status;
    std::optional<std::string> body;
    std::optional<HttpError> error;
};

/// How long a download or an upload may last in all; no honest one comes near it.
inline constexpr std::chrono::hours longestTransfer{24};

/// A GET request over HTTPS whose body goes into a file.
struct DownloadRequest {
    std::string url;         ///< absolute, in the syntax of RFC 3986
    std::string userAgent;   ///< the "User-Agent" header
    std::string destination; ///< absolute path of the file; an existing one is replaced
    std::chrono::milliseconds stallTimeout{240'000}; ///< how long it may go without receiving a byte
    std::chrono::milliseconds timeout{longestTransfer};
};

/// Receives the events of a download, on the main queue: one for its beginning, one for its end. A download
/// that cannot begin only reports its failure. In between it reports how many bytes have arrived, at most ten
/// times a second, if the answer is the file and announces its length; what an earlier attempt has left counts.
class DownloadDelegate {
public:
    virtual ~DownloadDelegate() = default;
    virtual void downloadDidBegin() = 0;
    /// Called at most once, if an earlier attempt has left so many bytes and the server sends only the rest.
    virtual void downloadDidContinue(std::uint64_t kept) = 0;
    virtual void downloadDidReceive(std::uint64_t received, std::uint64_t announced) = 0;
    virtual void downloadDidFail(const HttpError& error) = 0;
    virtual void downloadDidFinish() = 0;
};

/// A download or an upload, in progress or finished. Destroying it stops it, and its delegate hears nothing
/// more.
class Transfer {
public:
    virtual ~Transfer() = default;
};
using Download = Transfer;
using Connection = Transfer;

/// A POST request over HTTPS.
struct PostRequest {
    std::string url;                                          ///< absolute, in the syntax of RFC 3986
    std::vector<std::pair<std::string, std::string>> headers; ///< in order
    std::string body;                         ///< the whole body, or what precedes the file's bytes
    std::shared_ptr<const ReadableFile> file; ///< read while it is sent, on another thread; may be null
    std::string bodyBehindFile;
    std::chrono::milliseconds stallTimeout{60'000}; ///< how long it may go without transferring a byte
    std::chrono::milliseconds timeout{longestTransfer};
    std::size_t maximumAnswerSize = std::size_t{1} << 16; ///< in bytes; a longer answer is cut off there

    /// Returns the size of the whole body, in bytes.
    std::uint64_t bodySize() const { return body.size() + (file ? file->size() : 0) + bodyBehindFile.size(); }
};

/// Receives the events of a connection, on the main queue: the response and its data as they arrive, then,
/// once, the end. The status is not judged.
class ConnectionDelegate {
public:
    virtual ~ConnectionDelegate() = default;
    virtual void connectionDidReceiveResponse() = 0;
    virtual void connectionDidReceiveData(std::string_view data) = 0;
    virtual void connectionDidFinishLoading() = 0;
    virtual void connectionDidFail(const HttpError& error) = 0;
};

/// HTTPS with certificates verified against the system's and those named by SSL_CERT_FILE and SSL_CERT_DIR.
/// Redirects are followed, but never away from HTTPS. Compressed answers are decoded, and their limits apply
/// to the decoded bytes; the body of a download is left as it is.
class HttpClient {
public:
    virtual ~HttpClient() = default;

    /// Sends the request and blocks until it has been answered, has failed or has timed out. A text that is
    /// not a URL, a URL with another scheme, or one with a user name (which hides the host from the reader)
    /// is an error, and no server is contacted. Never throws. One at a time, on any thread.
    virtual HttpReply get(const HttpRequest& request) = 0;

    /// Starts a download and returns at once, with nullptr if it could not be started at all. The destination
    /// appears only when the body is complete and the status is 2xx; otherwise it is left as it was, and
    /// nothing is left beside it. What has come of a download that breaks off is kept for a day, if the server
    /// names a version and sends ranges; the next download of the same URL to a file of that name continues it.
    /// The delegate must outlive the download. URLs are checked as for get(). Never throws. Main thread only.
    virtual std::unique_ptr<Transfer> download(const DownloadRequest& request,
                                               DownloadDelegate& delegate) = 0;

    /// Sends a request and returns at once, with nullptr if it could not be started at all. Redirects are not
    /// followed. The delegate must outlive the connection. URLs are checked as for get(). Never throws. Main
    /// thread only.
    virtual std::unique_ptr<Transfer> connect(PostRequest request, ConnectionDelegate& delegate) = 0;
};

} // namespace join::platform
