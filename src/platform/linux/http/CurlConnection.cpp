#include "platform/linux/http/CurlTransfer.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

namespace join::platform {

namespace {

using Report = DelegateReport<ConnectionDelegate>;

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

/// One request and its answer.
class Post {
public:
    Post(const PostRequest& request, const Report& report, CURL* handle)
        : request_(request), report_(report), handle_(handle),
          exchange_(request.url, std::numeric_limits<std::uint64_t>::max()) {}

    Failure perform(const std::stop_token& stop);

private:
    static std::size_t send(char* bytes, std::size_t one, std::size_t size, void* post) noexcept;
    static int seek(void* post, curl_off_t offset, int origin) noexcept;
    static std::size_t noteHeader(char* bytes, std::size_t one, std::size_t size, void* post) noexcept;
    static std::size_t receive(char* bytes, std::size_t one, std::size_t size, void* post) noexcept;
    bool setOptions();

    const PostRequest& request_;
    const Report& report_;
    CURL* handle_;
    CurlExchange exchange_;
    std::uint64_t sent_ = 0;     ///< bytes of the body
    std::uint64_t received_ = 0; ///< bytes of the answer
    bool hasResponse_ = false;
    bool isAnswerCut_ = false;
    bool isFileShort_ = false;
};

Failure Post::perform(const std::stop_token& stop) {
    if (!setOptions())
        return optionsRefused;
    const CURLcode code = platform::perform(handle_, stop);
    if (isFileShort_)
        return "The file to be sent has become shorter";
    if (code != CURLE_OK && !isAnswerCut_)
        return exchange_.descriptionOf(code);
    return std::nullopt;
}

bool Post::setOptions() {
    CurlOptions options(handle_, exchange_);
    for (const auto& [name, value] : request_.headers)
        options.addHeader(headerLine(name, value));
    for (const char* own : {"Accept:", "Content-Type:", "Expect:"}) // unless given above
        options.addHeader(own);
    options.decodeAnswer();
    options.setStallTimeout(request_.stallTimeout);
    options.set(CURLOPT_FOLLOWLOCATION, 0L);
    options.set(CURLOPT_POST, 1L);
    options.set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request_.bodySize()));
    options.set(CURLOPT_READFUNCTION, &send);
    options.set(CURLOPT_READDATA, this);
    options.set(CURLOPT_SEEKFUNCTION, &seek);
    options.set(CURLOPT_SEEKDATA, this);
    options.set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L); // those of a proxy
    options.set(CURLOPT_HEADERFUNCTION, &noteHeader);
    options.set(CURLOPT_HEADERDATA, this);
    options.set(CURLOPT_WRITEFUNCTION, &receive);
    options.set(CURLOPT_WRITEDATA, this);
    return options.accepted();
}

std::size_t Post::send(char* bytes, std::size_t one, std::size_t size, void* post) noexcept {
    auto& self = *static_cast<Post*>(post);
    const std::size_t count = copyBody(self.request_, self.sent_, {bytes, one * size});
    self.sent_ += count;
    self.isFileShort_ = count == 0 && self.sent_ < self.request_.bodySize();
    return self.isFileShort_ ? CURL_READFUNC_ABORT : count;
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
    long status = 0;
    curl_easy_getinfo(self.handle_, CURLINFO_RESPONSE_CODE, &status);
    if ((line == "\r\n" || line == "\n") && status >= 200 && !std::exchange(self.hasResponse_, true))
        self.report_.tell(&ConnectionDelegate::connectionDidReceiveResponse);
    return size;
}

std::size_t Post::receive(char* bytes, std::size_t /*one*/, std::size_t size, void* post) noexcept {
    auto& self = *static_cast<Post*>(post);
    const std::uint64_t room = self.request_.maximumAnswerSize - self.received_;
    self.isAnswerCut_ = size > room;
    const std::string taken(bytes, std::min<std::uint64_t>(size, room));
    self.received_ += taken.size();
    if (!taken.empty())
        self.report_.tell(&ConnectionDelegate::connectionDidReceiveData, taken);
    return self.isAnswerCut_ ? CURL_WRITEFUNC_ERROR : size;
}

void post(const PostRequest& request, const Report& report, CURL* handle, const std::stop_token& stop) {
    if (auto failure = Post(request, report, handle).perform(stop))
        report.tell(&ConnectionDelegate::connectionDidFail, HttpError{std::move(*failure), request.url});
    else
        report.tell(&ConnectionDelegate::connectionDidFinishLoading);
}

} // namespace

std::unique_ptr<Connection> startConnection(PostRequest request, MainQueue& mainQueue,
                                            ConnectionDelegate& delegate) {
    using Transfer = CurlTransfer<Connection, PostRequest, ConnectionDelegate>;
    return std::make_unique<Transfer>(std::move(request), mainQueue, delegate, &post);
}

} // namespace join::platform
