#pragma once

#include "platform/linux/DownloadReport.h"

namespace join::platform {

/// A download that could not begin. Its delegate is told why, on the main queue like every other news.
class FailedDownload final : public Download {
public:
    FailedDownload(MainQueue& mainQueue, DownloadDelegate& delegate, HttpError error)
        : report_(mainQueue, delegate) {
        report_.failed(std::move(error));
    }

private:
    DownloadReport report_;
};

} // namespace join::platform
