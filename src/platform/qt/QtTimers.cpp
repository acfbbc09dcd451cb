#include "platform/qt/QtTimers.h"

#include <QTimer>

#include <utility>

namespace join::platform {

namespace {

class QtTimer final : public Timer {
public:
    QtTimer(std::chrono::milliseconds interval, std::function<void()> action) {
        QObject::connect(&timer_, &QTimer::timeout, &timer_, std::move(action));
        timer_.start(interval);
    }

private:
    QTimer timer_;
};

} // namespace

std::unique_ptr<Timer> QtTimers::repeating(std::chrono::milliseconds interval, std::function<void()> action) {
    return std::make_unique<QtTimer>(interval, std::move(action));
}

} // namespace join::platform
