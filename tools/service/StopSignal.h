#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace join::tools {

/// Ends waiting answers early. Any thread.
class StopSignal {
public:
    void stop() {
        {
            const std::lock_guard lock(mutex_);
            isStopping_ = true;
        }
        stopping_.notify_all();
    }

    /// Waits that long, or until stop(); returns whether it was stopped.
    bool wait(std::chrono::milliseconds time) {
        std::unique_lock lock(mutex_);
        return stopping_.wait_for(lock, time, [this] { return isStopping_; });
    }

private:
    std::mutex mutex_;
    std::condition_variable stopping_;
    bool isStopping_ = false;
};

} // namespace join::tools
