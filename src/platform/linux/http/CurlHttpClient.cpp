#include "platform/linux/http/CurlHttpClient.h"

#include "platform/linux/http/CurlTransfer.h"
#include "platform/linux/http/KeptPart.h"

#include <exception>
#include <utility>

namespace join::platform {

namespace {

class Get final : CurlExchange {
public:
    Get(CurlHandle& handle, const HttpRequest& request, bool decodes)
        : CurlExchange(handle, request.url, request.maximumBodySize, request.timeout), url_(request.url) {
        if (decodes)
            decodeAnswer();
    }

    /// Sends the request. Returns libcurl's code.
    CURLcode perform(HttpReply& reply) {
        const CURLcode code = CurlExchange::perform();
        if (code == CURLE_OK)
            reply = {.status = static_cast<int>(status()), .body = std::move(body_), .error = {}};
        else
            reply = {.status = {}, .body = {}, .error = HttpError{descriptionOf(code), url_}};
        return code;
    }

private:
    bool take(std::string_view bytes) override {
        body_ += bytes;
        return true;
    }

    const std::string& url_;
    std::string body_;
};

} // namespace

CurlHttpClient::CurlHttpClient(MainQueue& mainQueue, const TrustPolicy& policy)
    : mainQueue_(mainQueue), policy_(policy), handle_(std::make_unique<CurlHandle>(policy)) {
    KeptPart::removeOutdated();
}

CurlHttpClient::~CurlHttpClient() = default;

HttpReply CurlHttpClient::get(const HttpRequest& request) {
    HttpReply reply;
    // A body that is not in the coding named by its server, or in one that does not exist, such as "UTF-8",
    // is usually plain text.
    if (Get(*handle_, request, true).perform(reply) == CURLE_BAD_CONTENT_ENCODING)
        Get(*handle_, request, false).perform(reply);
    return reply;
}

std::unique_ptr<Transfer> CurlHttpClient::download(const DownloadRequest& request,
                                                   DownloadDelegate& delegate) try {
    return startDownload(request, mainQueue_, policy_, delegate);
} catch (const std::exception&) {
    return nullptr;
}

std::unique_ptr<Transfer> CurlHttpClient::connect(PostRequest request, ConnectionDelegate& delegate) try {
    return startConnection(std::move(request), mainQueue_, policy_, delegate);
} catch (const std::exception&) {
    return nullptr;
}

} // namespace join::platform
