#include "platform/linux/http/CurlTransfer.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>

namespace join::platform {

namespace {

std::string headerLine(const std::string& name, const std::string& value) {
    return withoutControls(value.empty() ? name + ";" : name + ": " + value);
}

/// Copies the bytes of the request's body from the offset on. Returns their number; 0 at the end.
std::size_t copyBody(const PostRequest& request, std::uint64_t offset, std::span<char> buffer) {
    if (offset < request.body.size())
        return request.body.copy(buffer.data(), buffer.size(), offset);
    offset -= request.body.size();
    const std::uint64_t fileSize = request.file ? request.file->size() : 0;
    if (offset < fileSize)
        return request.file->read(offset,
                                  buffer.first(std::min<std::uint64_t>(buffer.size(), fileSize - offset)));
    offset -= fileSize;
    return request.bodyBehindFile.copy(buffer.data(), buffer.size(),
                                       std::min<std::uint64_t>(offset, request.bodyBehindFile.size()));
}

class Post final : CurlExchange {
public:
    Post(const PostRequest& request, ConnectionDelegate& delegate, CurlHandle& handle,
         const Reports& reports);

    void perform(const std::stop_token& stop);

private:
    static std::size_t send(char* bytes, std::size_t one, std::size_t size, void* post) noexcept;
    static int seek(void* post, curl_off_t offset, int origin) noexcept;
    static std::size_t noteHeader(char* bytes, std::size_t one, std::size_t size, void* post) noexcept;
    bool take(std::string_view bytes) override;

    const PostRequest& request_;
    ConnectionDelegate& delegate_;
    const Reports& reports_;
    std::uint64_t sent_ = 0; ///< bytes of the body
    bool hasResponse_ = false;
};

Post::Post(const PostRequest& request, ConnectionDelegate& delegate, CurlHandle& handle,
           const Reports& reports)
    : CurlExchange(handle, request.url, request.maximumAnswerSize, request.timeout), request_(request),
      delegate_(delegate), reports_(reports) {
    followsRedirects_ = false;
    for (const auto& [name, value] : request.headers)
        addHeader(headerLine(name, value));
    for (const char* own : {"Accept:", "Content-Type:", "Expect:"}) // unless given above
        addHeader(own);
    decodeAnswer();
    setStallTimeout(request.stallTimeout);
    set(CURLOPT_MAXFILESIZE_LARGE, curl_off_t{0}); // a longer answer is cut off
    set(CURLOPT_POST, 1L);
    set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.bodySize()));
    set(CURLOPT_READFUNCTION, &send);
    set(CURLOPT_READDATA, this);
    set(CURLOPT_SEEKFUNCTION, &seek);
    set(CURLOPT_SEEKDATA, this);
    set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L); // those of a proxy
    set(CURLOPT_HEADERFUNCTION, &noteHeader);
    set(CURLOPT_HEADERDATA, this);
}

void Post::perform(const std::stop_token& stop) {
    const CURLcode code = CurlExchange::perform(stop);
    if (code == CURLE_OK || isTooLong_)
        reports_.tell([to = &delegate_] { to->connectionDidFinishLoading(); });
    else
        reports_.tell([to = &delegate_, error = HttpError{descriptionOf(code), request_.url}] {
            to->connectionDidFail(error);
        });
}

std::size_t Post::send(char* bytes, std::size_t one, std::size_t size, void* post) noexcept {
    auto& self = *static_cast<Post*>(post);
    const std::size_t count = copyBody(self.request_, self.sent_, {bytes, one * size});
    self.sent_ += count;
    if (count > 0 || self.sent_ == self.request_.bodySize())
        return count;
    self.failure_ = "The file to be sent has become shorter";
    return CURL_READFUNC_ABORT;
}

/// Called when the body must be sent again, for example after the server has closed an idle connection.
int Post::seek(void* post, curl_off_t offset, int /*SEEK_SET*/) noexcept {
    static_cast<Post*>(post)->sent_ = static_cast<std::uint64_t>(offset);
    return CURL_SEEKFUNC_OK;
}

/// An empty line ends the headers: first those of interim responses (RFC 9110, 15.2), then the final ones.
std::size_t Post::noteHeader(char* bytes, std::size_t /*one*/, std::size_t size, void* post) noexcept {
    auto& self = *static_cast<Post*>(post);
    const std::string_view line(bytes, size);
    if ((line == "\r\n" || line == "\n") && self.status() >= 200 && !std::exchange(self.hasResponse_, true))
        self.reports_.tell([to = &self.delegate_] { to->connectionDidReceiveResponse(); });
    return size;
}

bool Post::take(std::string_view bytes) {
    if (!bytes.empty())
        reports_.tell([to = &delegate_, taken = std::string(bytes)] { to->connectionDidReceiveData(taken); });
    return true;
}

} // namespace

std::unique_ptr<Transfer> startConnection(PostRequest request, MainQueue& mainQueue,
                                          const TrustPolicy& policy, ConnectionDelegate& delegate) {
    return std::make_unique<CurlTransfer>(
        mainQueue, policy,
        [request = std::move(request), &delegate](CurlHandle& handle, const Reports& reports,
                                                  const std::stop_token& stop) {
            Post(request, delegate, handle, reports).perform(stop);
        });
}

} // namespace join::platform
