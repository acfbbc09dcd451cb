#include "platform/qt/QtTimers.h"

#include "platform/qt/QtMainQueue.h"

#include <QTimer>

#include <utility>

namespace join::platform {

namespace {

struct QtTimer final : Timer {
    QTimer timer;
};

} // namespace

std::unique_ptr<Timer> QtTimers::repeating(std::chrono::milliseconds interval, std::function<void()> action) {
    auto running = std::make_unique<QtTimer>();
    QObject::connect(&running->timer, &QTimer::timeout, &running->timer, [this, action = std::move(action)] {
        if (!mainQueue_.isHeld())
            action();
    });
    running->timer.start(interval);
    return running;
}

} // namespace join::platform
