// The URL of a request. If curl accepts a URL that we accept, it must find the same server in it.

#include "platform/linux/http/HttpUrl.h"
#include "Target.h"

#include <curl/curl.h>

#include <memory>

namespace join::fuzz {

namespace {

using Url = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;

/// The part as curl sees it; empty when there is none.
std::string part(const Url& url, CURLUPart which) {
    char* text = nullptr;
    if (curl_url_get(url.get(), which, &text, 0) != CURLUE_OK)
        return {};
    const std::unique_ptr<char, decltype(&curl_free)> owned(text, &curl_free);
    return text;
}

/// Whether curl would keep the host as it is: it has no escapes, and is not an address.
bool isWrittenAsGiven(std::string_view host) {
    return host.find_first_of("%[") == std::string_view::npos &&
           host.find_first_of("ghijklmnopqrstuvwyzGHIJKLMNOPQRSTUVWYZ") != std::string_view::npos;
}

} // namespace

void tryOut(std::string_view input) {
    if (const auto reason = platform::reasonToRefuseUrl(input)) {
        require(!reason->empty());
        return;
    }
    require(input.find_first_of(std::string_view("\0\r\n\t \\\"<>", 9)) == std::string_view::npos);
    const std::string_view rest = input.substr(std::string_view("https://").size());
    const std::string_view host = rest.substr(0, rest.find_first_of(":/?#"));
    const Url url(curl_url(), &curl_url_cleanup);
    if (curl_url_set(url.get(), CURLUPART_URL, std::string(input).c_str(), 0) != CURLUE_OK)
        return;
    require(part(url, CURLUPART_SCHEME) == "https" && part(url, CURLUPART_USER).empty());
    require(!isWrittenAsGiven(host) || part(url, CURLUPART_HOST) == host);
}

} // namespace join::fuzz
