#pragma once

#include "platform/MainQueue.h"

#include <QObject>

#include <deque>
#include <functional>
#include <mutex>

namespace join::platform {

/// The main queue on Qt's event loop.
class QtMainQueue final : public QObject, public MainQueue {
public:
    void enqueue(std::function<void()> work) override;

    /// Returns whether a Hold lives. Main thread only.
    bool isHeld() const { return holds_ > 0; }

    /// No work begins while one of these lives, and no timer of the logic fires. The loop may have to run for
    /// the window system in the middle of an operation; what that operation has queued must wait until it has
    /// returned. Main thread only.
    class Hold {
    public:
        explicit Hold(QtMainQueue& queue);
        ~Hold();
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;

    private:
        QtMainQueue& queue_;
    };

private:
    void wake();
    void runWork();

    std::mutex mutex_;
    std::deque<std::function<void()>> waiting_;
    int holds_ = 0;
};

} // namespace join::platform
