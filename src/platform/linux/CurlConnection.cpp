#include "platform/linux/CurlConnection.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

namespace join::platform {

namespace {

using Report = DelegateReport<ConnectionDelegate>;
using Failure = std::optional<std::string>; ///< a description; nothing when all went well

/// Header lines as libcurl takes them.
class HeaderList {
public:
    /// False when there is no memory left.
    bool add(const std::string& line) {
        curl_slist* longer = curl_slist_append(list_.get(), line.c_str());
        if (!longer)
            return false;
        (void)list_.release(); // the longer list begins with it
        list_.reset(longer);
        return true;
    }
    curl_slist* get() const { return list_.get(); }

private:
    std::unique_ptr<curl_slist, void (*)(curl_slist*)> list_{nullptr, curl_slist_free_all};
};

/// libcurl sends "Name;" as a header without a value; "Name:" would mean none of its own.
std::string headerLine(const std::string& name, const std::string& value) {
    return withoutControls(value.empty() ? name + ";" : name + ": " + value);
}

/// One request and what comes back.
class Post {
public:
    Post(const PostRequest& request, const Report& report, CURL* handle)
        : request_(request), report_(report), handle_(handle),
          exchange_(request.url, request.maximumAnswerSize) {}

    Failure perform(const std::stop_token& stop);

private:
    static std::size_t noteHeader(char* bytes, std::size_t one, std::size_t size, void* post) noexcept;
    static std::size_t receive(char* bytes, std::size_t one, std::size_t size, void* post) noexcept;
    bool listHeaders();
    bool setOptions();

    const PostRequest& request_;
    const Report& report_;
    CURL* handle_;
    CurlExchange exchange_;
    HeaderList headers_;
    bool hasResponse_ = false;
};

Failure Post::perform(const std::stop_token& stop) {
    if (!listHeaders() || !setOptions())
        return optionsRefused;
    const CURLcode code = CurlWorker::perform(handle_, stop);
    if (code != CURLE_OK)
        return exchange_.descriptionOf(code);
    return std::nullopt;
}

bool Post::listHeaders() {
    for (const auto& [name, value] : request_.headers)
        if (!headers_.add(headerLine(name, value)))
            return false;
    // libcurl's own, which it leaves out for these; a header given above stays.
    return headers_.add("Accept:") && headers_.add("Content-Type:") && headers_.add("Expect:");
}

bool Post::setOptions() {
    CurlOptions options(handle_, exchange_);
    options.setStallTimeout(request_.stallTimeout);
    options.set(CURLOPT_FOLLOWLOCATION, 0L);
    options.set(CURLOPT_POST, 1L);
    options.set(CURLOPT_POSTFIELDS, request_.body.data()); // not copied
    options.set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request_.body.size()));
    options.set(CURLOPT_HTTPHEADER, headers_.get());
    options.set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L); // a proxy's
    options.set(CURLOPT_HEADERFUNCTION, &noteHeader);
    options.set(CURLOPT_HEADERDATA, this);
    options.set(CURLOPT_WRITEFUNCTION, &receive);
    options.set(CURLOPT_WRITEDATA, this);
    return options.accepted();
}

/// An empty line ends the headers: those of interim responses (RFC 9110, 15.2), then those of the final one.
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
    if (!self.exchange_.count(size))
        return CURL_WRITEFUNC_ERROR;
    self.report_.tell(&ConnectionDelegate::connectionDidReceiveData, std::string(bytes, size));
    return size;
}

} // namespace

CurlConnection::CurlConnection(PostRequest request, MainQueue& mainQueue, ConnectionDelegate& delegate)
    : request_(std::move(request)), report_(mainQueue, delegate),
      worker_([this](CURL* handle, const std::stop_token& stop) { run(handle, stop); }) {}

void CurlConnection::run(CURL* handle, const std::stop_token& stop) {
    auto failure = Post(request_, report_, handle).perform(stop);
    if (failure)
        report_.tell(&ConnectionDelegate::connectionDidFail, HttpError{std::move(*failure), request_.url});
    else
        report_.tell(&ConnectionDelegate::connectionDidFinishLoading);
}

} // namespace join::platform
