#pragma once

#include "platform/MainQueue.h"

#include <functional>
#include <memory>
#include <utility>

namespace join::platform {

/// Reports to a delegate on the main queue. Create and destroy it on the main thread; reports not delivered
/// before its destruction are dropped.
class Reports {
public:
    explicit Reports(MainQueue& mainQueue) : mainQueue_(mainQueue) {}
    Reports(const Reports&) = delete;
    Reports& operator=(const Reports&) = delete;
    ~Reports() = default;

    /// Queues a report. Any thread.
    void tell(std::function<void()> report) const {
        mainQueue_.enqueue([alive = std::weak_ptr(alive_), report = std::move(report)] {
            if (!alive.expired())
                report();
        });
    }

private:
    MainQueue& mainQueue_;
    std::shared_ptr<bool> alive_ =
        std::make_shared<bool>(); ///< the only owner: it is gone when this object is
};

} // namespace join::platform
