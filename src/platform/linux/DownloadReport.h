#pragma once

#include "platform/HttpClient.h"
#include "platform/MainQueue.h"

#include <functional>
#include <memory>
#include <utility>

namespace join::platform {

/// Tells the delegate of a download about it, on the main queue. Made and destroyed on the main thread; what
/// has not been told by then never is. The rest may be called on any thread.
class DownloadReport {
public:
    DownloadReport(MainQueue& mainQueue, DownloadDelegate& delegate)
        : mainQueue_(mainQueue), delegate_(std::make_shared<DownloadDelegate*>(&delegate)) {}
    DownloadReport(const DownloadReport&) = delete;
    DownloadReport& operator=(const DownloadReport&) = delete;
    ~DownloadReport() = default;

    void begun() const {
        tell([](DownloadDelegate& delegate) { delegate.downloadDidBegin(); });
    }
    void failed(HttpError error) const {
        tell([error = std::move(error)](DownloadDelegate& delegate) { delegate.downloadDidFail(error); });
    }
    void finished() const {
        tell([](DownloadDelegate& delegate) { delegate.downloadDidFinish(); });
    }

private:
    void tell(std::function<void(DownloadDelegate&)> news) const {
        mainQueue_.enqueue([to = std::weak_ptr(delegate_), news = std::move(news)] {
            if (const auto delegate = to.lock())
                news(**delegate);
        });
    }

    MainQueue& mainQueue_;
    std::shared_ptr<DownloadDelegate*> delegate_; ///< the one owner: it is gone when this is
};

} // namespace join::platform
