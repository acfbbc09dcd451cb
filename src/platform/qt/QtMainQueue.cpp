#include "platform/qt/QtMainQueue.h"

#include <QMetaObject>

#include <utility>

namespace join::platform {

void QtMainQueue::enqueue(std::function<void()> work) {
    {
        const std::scoped_lock lock(mutex_);
        waiting_.push_back(std::move(work));
    }
    wake();
}

void QtMainQueue::wake() {
    QMetaObject::invokeMethod(
        this, [this] { runWork(); }, Qt::QueuedConnection);
}

void QtMainQueue::runWork() {
    if (isHeld())
        return;
    std::function<void()> work;
    {
        const std::scoped_lock lock(mutex_);
        if (waiting_.empty())
            return;
        work = std::move(waiting_.front());
        waiting_.pop_front();
    }
    work();
}

QtMainQueue::Hold::Hold(QtMainQueue& queue) : queue_(queue) { ++queue_.holds_; }

QtMainQueue::Hold::~Hold() {
    if (--queue_.holds_ > 0)
        return;
    const std::scoped_lock lock(queue_.mutex_);
    for (std::size_t i = 0; i < queue_.waiting_.size(); ++i) // each lost its turn during the hold
        queue_.wake();
}

} // namespace join::platform
