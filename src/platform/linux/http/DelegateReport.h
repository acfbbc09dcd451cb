#pragma once

#include "platform/HttpClient.h"
#include "platform/MainQueue.h"

#include <memory>
#include <utility>

namespace join::platform {

/// Reports to a delegate on the main queue. Create and destroy it on the main thread; reports not delivered
/// before its destruction are dropped.
template <typename Delegate>
class DelegateReport {
public:
    DelegateReport(MainQueue& mainQueue, Delegate& delegate)
        : mainQueue_(mainQueue), delegate_(std::make_shared<Delegate*>(&delegate)) {}
    DelegateReport(const DelegateReport&) = delete;
    DelegateReport& operator=(const DelegateReport&) = delete;
    ~DelegateReport() = default;

    /// Queues a call of the delegate's function with these arguments, which are kept until then. Any thread.
    template <typename... Parameters, typename... Arguments>
    void tell(void (Delegate::*news)(Parameters...), Arguments... arguments) const {
        mainQueue_.enqueue([to = std::weak_ptr(delegate_), news, ... kept = std::move(arguments)] {
            if (const auto delegate = to.lock())
                ((*delegate)->*news)(kept...);
        });
    }

private:
    MainQueue& mainQueue_;
    std::shared_ptr<Delegate*> delegate_; ///< the only owner: it is gone when this object is
};

/// A Download or a Connection that could not begin. Its delegate is told why, on the main queue like all
/// reports.
template <typename Transfer, typename Delegate>
class FailedTransfer final : public Transfer {
public:
    using News = void (Delegate::*)(const HttpError&);

    FailedTransfer(MainQueue& mainQueue, Delegate& delegate, News failed, HttpError error)
        : report_(mainQueue, delegate) {
        report_.tell(failed, std::move(error));
    }

private:
    DelegateReport<Delegate> report_;
};

inline std::unique_ptr<Download> failedDownload(MainQueue& mainQueue, DownloadDelegate& delegate,
                                                HttpError error) {
    return std::make_unique<FailedTransfer<Download, DownloadDelegate>>(
        mainQueue, delegate, &DownloadDelegate::downloadDidFail, std::move(error));
}

inline std::unique_ptr<Connection> failedConnection(MainQueue& mainQueue, ConnectionDelegate& delegate,
                                                    HttpError error) {
    return std::make_unique<FailedTransfer<Connection, ConnectionDelegate>>(
        mainQueue, delegate, &ConnectionDelegate::connectionDidFail, std::move(error));
}

} // namespace join::platform
