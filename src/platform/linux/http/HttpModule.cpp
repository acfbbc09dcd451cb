#include "platform/linux/http/HttpModule.h"

#include "platform/linux/http/Reports.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <utility>

namespace join::platform {

namespace {

/// A transfer that could not begin. Its delegate is told why, on the main queue like all reports.
class FailedTransfer final : public Transfer {
public:
    FailedTransfer(MainQueue& mainQueue, std::function<void()> report) : reports_(mainQueue) {
        reports_.tell(std::move(report));
    }

private:
    Reports reports_;
};

} // namespace

HttpModule::HttpModule(std::string path, MainQueue& mainQueue, const TrustPolicy& policy)
    : path_(std::move(path)), file_(openForReading(AT_FDCWD, path_.c_str())), mainQueue_(mainQueue),
      policy_(policy), loading_(std::async(std::launch::deferred, [this] { return openModule(); })) {}

void HttpModule::begin() {
    loading_ = std::async([this] { return openModule(); }); // where no thread can be started, on demand
}

/// Returns false if there is no client, now or ever.
bool HttpModule::load() {
    if (loading_.valid())
        client_ = loading_.get();
    return client_ != nullptr;
}

HttpReply HttpModule::get(const HttpRequest& request) {
    if (!load())
        return {.status = {}, .body = {}, .error = HttpError{failure_, request.url}};
    return client_->get(request);
}

std::unique_ptr<Transfer> HttpModule::download(const DownloadRequest& request, DownloadDelegate& delegate) {
    if (load())
        return client_->download(request, delegate);
    return std::make_unique<FailedTransfer>(
        mainQueue_,
        [&delegate, error = HttpError{failure_, request.url}] { delegate.downloadDidFail(error); });
}

std::unique_ptr<Transfer> HttpModule::connect(PostRequest request, ConnectionDelegate& delegate) {
    if (load())
        return client_->connect(std::move(request), delegate);
    return std::make_unique<FailedTransfer>(
        mainQueue_,
        [&delegate, error = HttpError{failure_, request.url}] { delegate.connectionDidFail(error); });
}

std::unique_ptr<HttpClient> HttpModule::openModule() {
    // Never closed: libraries loaded with it may own threads. A join calls only a few functions of its two
    // dozen libraries; resolving all of them would cost time and memory.
    const std::string opened = file_ ? "/proc/self/fd/" + std::to_string(file_.get()) : path_;
    void* module = ::dlopen(opened.c_str(), RTLD_LAZY | RTLD_LOCAL);
    void* entry = module ? ::dlsym(module, "join_make_http_client") : nullptr;
    if (!entry) {
        failure_ = std::string("The HTTP module cannot be loaded: ") + ::dlerror();
        if (const auto at = failure_.find(opened); at != std::string::npos)
            failure_.replace(at, opened.size(), path_);
        return nullptr;
    }
    std::unique_ptr<HttpClient> client(
        reinterpret_cast<decltype(&join_make_http_client)>(entry)(mainQueue_, policy_));
    if (!client)
        failure_ = "The HTTP module cannot make a client";
    return client;
}

} // namespace join::platform
