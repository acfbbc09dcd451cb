#include "platform/linux/http/CurlHttpClient.h"

#include "platform/linux/http/CurlTransfer.h"
#include "platform/linux/http/HttpUrl.h"

#include <exception>
#include <utility>

namespace join::platform {

namespace {

/// What the callbacks of one request share.
struct Exchange {
    explicit Exchange(const HttpRequest& request) : common(request.url, request.maximumBodySize) {}

    CurlExchange common;
    std::string body;
};

std::size_t receiveBody(char* bytes, std::size_t /*always 1*/, std::size_t size, void* user) noexcept {
    auto& exchange = *static_cast<Exchange*>(user);
    if (!exchange.common.count(size))
        return CURL_WRITEFUNC_ERROR;
    exchange.body.append(bytes, size);
    return size;
}

bool configure(CURL* handle, const HttpRequest& request, bool decodes, Exchange& exchange) {
    CurlOptions options(handle, exchange.common);
    options.setTimeout(CURLOPT_TIMEOUT_MS, request.timeout);
    if (decodes)
        options.decodeAnswer();
    options.set(CURLOPT_WRITEFUNCTION, &receiveBody);
    options.set(CURLOPT_WRITEDATA, &exchange);
    return options.accepted();
}

HttpReply failed(std::string description, const HttpRequest& request) {
    return {.status = {}, .body = {}, .error = HttpError{std::move(description), request.url}};
}

} // namespace

CurlHttpClient::CurlHttpClient(MainQueue& mainQueue) : mainQueue_(mainQueue), handle_(makeCurlHandle()) {}

HttpReply CurlHttpClient::get(const HttpRequest& request) {
    if (auto reason = reasonToRefuseUrl(request.url))
        return failed(std::move(*reason), request);

    HttpReply reply;
    // A body that is not in the coding named by its server, or in one that does not exist, such as "UTF-8",
    // is usually plain text.
    if (perform(request, true, reply) == CURLE_BAD_CONTENT_ENCODING)
        perform(request, false, reply);
    return reply;
}

int CurlHttpClient::perform(const HttpRequest& request, bool decodes, HttpReply& reply) {
    Exchange exchange{request};
    curl_easy_reset(handle_.get()); // keeps the connections
    const CURLcode code = configure(handle_.get(), request, decodes, exchange)
                              ? curl_easy_perform(handle_.get())
                              : CURLE_FAILED_INIT;
    long status = 0;
    curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &status);
    curl_easy_reset(handle_.get()); // the handle must not keep pointers to objects destroyed here
    if (code == CURLE_OK)
        reply = {.status = static_cast<int>(status), .body = std::move(exchange.body), .error = {}};
    else
        reply = failed(exchange.common.descriptionOf(code), request);
    return code;
}

std::unique_ptr<Download> CurlHttpClient::download(const DownloadRequest& request,
                                                   DownloadDelegate& delegate) try {
    if (auto reason = reasonToRefuseUrl(request.url))
        return failedDownload(mainQueue_, delegate, {std::move(*reason), request.url});
    return startDownload(request, mainQueue_, delegate);
} catch (const std::exception&) {
    return nullptr;
}

std::unique_ptr<Connection> CurlHttpClient::connect(PostRequest request, ConnectionDelegate& delegate) try {
    if (auto reason = reasonToRefuseUrl(request.url))
        return failedConnection(mainQueue_, delegate, {std::move(*reason), std::move(request.url)});
    return startConnection(std::move(request), mainQueue_, delegate);
} catch (const std::exception&) {
    return nullptr;
}

} // namespace join::platform
