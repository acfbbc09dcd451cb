#include "platform/qt/QtWaiting.h"

#include "platform/qt/QtMainQueue.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QScopedValueRollback>
#include <QShortcutEvent>
#include <QThread>

#include <chrono>
#include <utility>

namespace join::platform {

namespace {

using namespace std::chrono_literals;

constexpr auto moment = 5ms; ///< nobody sees that a window stands still for so long

bool isLeaving(const QKeySequence& keys) {
    return keys == Qt::Key_Escape || keys == (Qt::CTRL | Qt::Key_W) || keys == (Qt::CTRL | Qt::Key_Q);
}

/// Returns whether the event is input other than the user's wish to leave. Windows get all events before
/// their widgets, and must pass them on.
bool isLost(const QObject& receiver, const QEvent& event) {
    switch (event.type()) {
    case QEvent::Shortcut:
        return !isLeaving(static_cast<const QShortcutEvent&>(event).key());
    case QEvent::KeyPress:
        return receiver.isWidgetType() && static_cast<const QKeyEvent&>(event).key() != Qt::Key_Escape;
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseButtonRelease:
    case QEvent::TouchBegin:
        return receiver.isWidgetType() && !receiver.property("cancels").toBool();
    case QEvent::ContextMenu:
    case QEvent::DragEnter:
    case QEvent::InputMethod:
    case QEvent::Wheel:
        return receiver.isWidgetType();
    default:
        return false;
    }
}

} // namespace

QtWaiting::QtWaiting(QtMainQueue& mainQueue) : mainQueue_(mainQueue) {}

void QtWaiting::await(const std::function<void()>& work) {
    if (waits_ || QThread::currentThread() != thread()) {
        work();
        return;
    }
    if (!thread_.joinable()) // not earlier: with a second thread, loading the first window takes longer
        thread_ = std::jthread([this](const std::stop_token& stop) { doWork(stop); });
    const QScopedValueRollback waits(waits_, true);
    std::future<void> end;
    {
        const std::scoped_lock lock(mutex_);
        work_ = std::packaged_task<void()>(work);
        end = work_.get_future();
    }
    given_.notify_one();
    if (end.wait_for(moment) != std::future_status::ready)
        turnLoopUntil(end);
    end.get();
}

void QtWaiting::turnLoopUntil(const std::future<void>& end) {
    const QtMainQueue::Hold hold(mainQueue_);
    QCoreApplication::instance()->installEventFilter(this);
    while (end.wait_for(0s) != std::future_status::ready)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    QCoreApplication::instance()->removeEventFilter(this);
}

bool QtWaiting::eventFilter(QObject* receiver, QEvent* event) { return isLost(*receiver, *event); }

void QtWaiting::doWork(const std::stop_token& stop) {
    std::unique_lock lock(mutex_);
    while (given_.wait(lock, stop, [this] { return work_.valid(); })) {
        std::packaged_task<void()> work = std::exchange(work_, {});
        lock.unlock();
        work();
        QAbstractEventDispatcher::instance(thread())->wakeUp();
        lock.lock();
    }
}

} // namespace join::platform
