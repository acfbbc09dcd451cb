#include "platform/qt/QtMainQueue.h"
#include "platform/qt/QtTimers.h"
#include "platform/qt/QtWaiting.h"
#include "platform/qt/SpinningIndicator.h"

#include <gtest/gtest.h>

#include <QtTest>

#include <stdexcept>

namespace join::platform {
namespace {

using namespace std::chrono_literals;

class QtLoop : public testing::Test {
protected:
    /// Runs the loop until the condition holds, for at most half a minute.
    static bool turnUntil(const std::function<bool()>& condition) {
        return QTest::qWaitFor(condition, 30'000);
    }

    QtMainQueue queue;
    QtTimers timers{queue};
};

TEST_F(QtLoop, RunsWorkOfAnyThreadInItsOrderOnTheMainThread) {
    std::vector<std::pair<int, std::thread::id>> done;
    std::thread([&] {
        for (int i = 0; i < 100; ++i)
            queue.enqueue([&, i] { done.emplace_back(i, std::this_thread::get_id()); });
    }).join();
    EXPECT_TRUE(done.empty());
    ASSERT_TRUE(turnUntil([&] { return done.size() == 100; }));
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(done[i], std::pair(i, std::this_thread::get_id()));
}

TEST_F(QtLoop, FiresATimerAgainAndAgainUntilItIsDestroyed) {
    int fired = 0;
    int others = 0;
    auto timer = timers.repeating(1ms, [&] { ++fired; });
    EXPECT_TRUE(turnUntil([&] { return fired >= 3; }));
    timer.reset();
    const int last = fired;
    const auto other = timers.repeating(1ms, [&] { ++others; });
    EXPECT_TRUE(turnUntil([&] { return others == 5; }));
    EXPECT_EQ(fired, last);
}

TEST_F(QtLoop, TurnsAnIndicatorOnlyWhileItIsAnimatedAndHasNoValue) {
    SpinningIndicator indicator;
    indicator.resize(36, 36);
    const auto turns = [&] {
        int times = 0;
        const auto clock = timers.repeating(50ms, [&] { ++times; });
        const QImage before = indicator.grab().toImage();
        turnUntil([&] { return times == 8 || indicator.grab().toImage() != before; });
        return times < 8;
    };
    indicator.startAnimation();
    EXPECT_TRUE(turns());
    indicator.stopAnimation();
    EXPECT_FALSE(turns());
    indicator.startAnimation();
    indicator.setValue(ProgressValue{0.25, "1 of 4 MB"});
    const QImage quarter = indicator.grab().toImage();
    EXPECT_FALSE(turns());
    EXPECT_EQ(indicator.toolTip(), "1 of 4 MB");
    indicator.setValue(ProgressValue{0.5, "2 of 4 MB"});
    EXPECT_NE(indicator.grab().toImage(), quarter);
    indicator.setValue(std::nullopt);
    EXPECT_TRUE(turns());
}

TEST_F(QtLoop, WhileTheLogicWaitsWindowsLiveAndNoLogicRuns) {
    QtWaiting waiting(queue);
    bool hasRun = false;
    const auto timer = timers.repeating(1ms, [&] { hasRun = true; });
    queue.enqueue([&] { hasRun = true; });
    SpinningIndicator indicator;
    indicator.startAnimation();
    std::promise<void> end;
    QTimer::singleShot(0, &indicator, [&] {
        const QImage before = indicator.grab().toImage();
        EXPECT_TRUE(turnUntil([&] { return indicator.grab().toImage() != before; }));
        waiting.during([&] { end.set_value(); }); // what leaving does must not wait for the wait
    });
    const auto thread = waiting.during([&] {
        end.get_future().wait();
        return std::this_thread::get_id();
    });
    EXPECT_NE(thread, std::this_thread::get_id());
    EXPECT_FALSE(hasRun);
    EXPECT_TRUE(turnUntil([&] { return hasRun; }));
    EXPECT_THROW(waiting.during([] { throw std::out_of_range("the work's"); }), std::out_of_range);
}

} // namespace
} // namespace join::platform
