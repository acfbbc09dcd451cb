#pragma once

#include "platform/HttpClient.h"
#include "platform/linux/http/DelegateReport.h"

#include <memory>
#include <utility>

namespace join::platform {

/// A Download or a Connection that could not begin. Its delegate is told why, on the main queue like every
/// other news.
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
