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

/// A GET request over HTTPS whose body goes into a file.
struct DownloadRequest {
    std::string url;                                 ///< absolute, as RFC 3986 writes it
    std::string userAgent;                           ///< the "User-Agent" header
    std::string destination;                         ///< absolute path of the file, replaced when it exists
    std::chrono::milliseconds stallTimeout{240'000}; ///< how long it may go on without a byte
};

/// Is told of a download, on the main queue: that it has begun, then how it has ended, each once. A download
/// that could not begin only fails.
class DownloadDelegate {
public:
    virtual ~DownloadDelegate() = default;
    virtual void downloadDidBegin() = 0;
    virtual void downloadDidFail(const HttpError& error) = 0;
    virtual void downloadDidFinish() = 0;
};

/// A download that is going on or has ended. Destroying it ends it; its delegate is told nothing more.
class Download {
public:
    virtual ~Download() = default;
};

/// A POST request over HTTPS.
struct PostRequest {
    std::string url;                                          ///< absolute, as RFC 3986 writes it
    std::vector<std::pair<std::string, std::string>> headers; ///< in their order
    std::string body;                         ///< all of it, or what stands before the file's bytes
    std::shared_ptr<const ReadableFile> file; ///< read while it is sent, on another thread; may be missing
    std::string bodyBehindFile;
    std::chrono::milliseconds stallTimeout{60'000};       ///< how long it may go on without a byte
    std::size_t maximumAnswerSize = std::size_t{1} << 16; ///< bytes; a longer answer ends there

    /// The length of the whole body, in bytes.
    std::uint64_t bodySize() const { return body.size() + (file ? file->size() : 0) + bodyBehindFile.size(); }
};

/// Is told of a connection, on the main queue: of the response and its data as they arrive, then, once, how
/// it has ended. The status is not judged.
class ConnectionDelegate {
public:
    virtual ~ConnectionDelegate() = default;
    virtual void connectionDidReceiveResponse() = 0;
    virtual void connectionDidReceiveData(std::string_view data) = 0;
    virtual void connectionDidFinishLoading() = 0;
    virtual void connectionDidFail(const HttpError& error) = 0;
};

/// A connection that is going on or has ended. Destroying it ends it; its delegate is told nothing more.
class Connection {
public:
    virtual ~Connection() = default;
};

/// HTTPS with certificates verified, against the system's and those that SSL_CERT_FILE and SSL_CERT_DIR name.
/// Redirects are followed, never off HTTPS. Answers that are compressed come decoded, and their limits hold
/// for the decoded bytes; the body of a download stays as it is.
class HttpClient {
public:
    virtual ~HttpClient() = default;

    /// Sends the request and blocks until it has been answered, has failed or has taken too long. Text that
    /// is no URL, one of another scheme, or one that names a user (which hides the host from its reader) is
    /// an error and asks nobody. Never throws. Main thread only.
    virtual HttpReply get(const HttpRequest& request) = 0;

    /// Starts a download and returns at once; nullptr when it could not be started at all. The destination
    /// appears only when the body is whole and the status is 2xx; otherwise it stays what it was, and nothing
    /// is left beside it. The delegate outlives the download. The URL is judged as for get(). Never throws.
    /// Main thread only.
    virtual std::unique_ptr<Download> download(const DownloadRequest& request,
                                               DownloadDelegate& delegate) = 0;

    /// Sends a request and returns at once; nullptr when it could not be started at all. Redirects are not
    /// followed. The delegate outlives the connection. The URL is judged as for get(). Never throws. Main
    /// thread only.
    virtual std::unique_ptr<Connection> connect(PostRequest request, ConnectionDelegate& delegate) = 0;
};

} // namespace join::platform
