#include "platform/linux/http/HttpModule.h"

#include "platform/linux/http/DelegateReport.h"

#include <dlfcn.h>
#include <utility>

namespace join::platform {

namespace {

std::string loaderError() {
    const char* text = ::dlerror();
    return text ? text : "unknown error";
}

} // namespace

HttpModule::HttpModule(std::string path, MainQueue& mainQueue)
    : path_(std::move(path)), mainQueue_(mainQueue) {}

bool HttpModule::load() {
    if (!std::exchange(tried_, true))
        client_ = openModule();
    return client_ != nullptr;
}

HttpReply HttpModule::get(const HttpRequest& request) {
    if (!load())
        return {.status = {}, .body = {}, .error = HttpError{failure_, request.url}};
    return client_->get(request);
}

std::unique_ptr<Download> HttpModule::download(const DownloadRequest& request, DownloadDelegate& delegate) {
    if (!load())
        return failedDownload(mainQueue_, delegate, {failure_, request.url});
    return client_->download(request, delegate);
}

std::unique_ptr<Connection> HttpModule::connect(PostRequest request, ConnectionDelegate& delegate) {
    if (!load())
        return failedConnection(mainQueue_, delegate, {failure_, std::move(request.url)});
    return client_->connect(std::move(request), delegate);
}

std::unique_ptr<HttpClient> HttpModule::openModule() {
    // Never closed: libraries loaded with it may own threads. A join calls only a few functions of its two
    // dozen libraries; resolving all of them would cost time and memory.
    void* module = ::dlopen(path_.c_str(), RTLD_LAZY | RTLD_LOCAL);
    void* entry = module ? ::dlsym(module, "join_make_http_client") : nullptr;
    if (!entry) {
        failure_ = "The HTTP module cannot be loaded: " + loaderError();
        return nullptr;
    }
    std::unique_ptr<HttpClient> client(reinterpret_cast<decltype(&join_make_http_client)>(entry)(mainQueue_));
    if (!client)
        failure_ = "The HTTP module cannot make a client";
    return client;
}

} // namespace join::platform
