#include "platform/qt/QtWindows.h"
#include "platform/Exception.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/QtTimers.h"
#include "platform/qt/QtWaiting.h"
#include "platform/qt/SpinningIndicator.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QPixmap>
#include <QScreen>
#include <QTest>
#include <QTimer>

#include <functional>
#include <future>
#include <thread>

namespace join::platform {
namespace {

/// Runs the loop until the condition holds, for at most half a minute.
bool turnUntil(const std::function<bool()>& condition) { return QTest::qWaitFor(condition, 30'000); }

class QtWindowsTest : public testing::Test {
protected:
    static QWidget& widget(const QString& name = "TavoJoinWindow") {
        for (QWidget* candidate : QApplication::topLevelWidgets())
            if (candidate->objectName() == name)
                return *candidate;
        throw std::runtime_error("no window");
    }

    QtMainQueue queue;
    QtWindows windows{queue};
    std::unique_ptr<Window> window = windows.load("TavoJoinWindow");
};

TEST_F(QtWindowsTest, AWindowHasBeenPaintedWhenItsShowingReturns) {
    window->setWhite();
    window->label("infoLabel").setStringValue("text");
    EXPECT_FALSE(window->isVisible());
    window->makeKeyAndOrderFront();
    EXPECT_TRUE(window->isVisible());
    EXPECT_FALSE(widget().testAttribute(Qt::WA_PendingUpdate));
    const auto screen = [] { return QApplication::primaryScreen()->grabWindow(widget().winId()).toImage(); };
    EXPECT_EQ(screen().pixelColor(2, 2), QColor(Qt::white));
    window->progressIndicator("progress").startAnimation();
    window->label("infoLabel").setStringValue("other words");
    window->display();
    const QImage drawn = screen();
    QApplication::processEvents();
    EXPECT_EQ(screen(), drawn);
    window->orderOut();
    EXPECT_FALSE(window->isVisible());
}

TEST_F(QtWindowsTest, WorkQueuedDuringAnOperationWaitsWhileAWindowIsShown) {
    bool hasRun = false;
    queue.enqueue([&] { hasRun = true; });
    const auto another = windows.load("TavoJoinWindow");
    another->makeKeyAndOrderFront();
    EXPECT_FALSE(hasRun);
    EXPECT_TRUE(turnUntil([&] { return hasRun; }));
}

TEST_F(QtWindowsTest, AWindowIsShownInTheMiddleAndReportsItsClosing) {
    int closed = 0;
    window->setCloseAction([&] { ++closed; });
    window->makeKeyAndOrderFront();
    const QPoint distance = widget().geometry().center() - QApplication::primaryScreen()->geometry().center();
    EXPECT_LE(distance.manhattanLength(), 8); // the desktop adds a frame
    widget().close();
    EXPECT_EQ(closed, 1);
    EXPECT_FALSE(window->isVisible());
}

TEST_F(QtWindowsTest, ABusyWindowTakesNothingButCancel) {
    const auto entry = windows.load("TavoJoinMainWindow");
    const QWidget* const shown = &widget("TavoJoinMainWindow");
    for (const bool isBusy : {true, false}) {
        entry->setBusy(isBusy);
        for (const char* name : {"keyInputTextfield", "emailInputTextfield", "joinButton"})
            EXPECT_EQ(shown->findChild<QWidget*>(name)->isEnabled(), !isBusy) << name;
        EXPECT_TRUE(shown->findChild<QWidget*>("cancelButton")->isEnabled());
        EXPECT_EQ(shown->cursor().shape(), isBusy ? Qt::BusyCursor : Qt::ArrowCursor);
    }
}

TEST_F(QtWindowsTest, ItsIconIsTheDesktopsInEverySize) {
    window->makeKeyAndOrderFront();
    ASSERT_TRUE(turnUntil([&] { return !widget().windowIcon().isNull(); }));
    for (const int size : {16, 24, 32, 48, 64, 128}) {
        const auto picture = [&](const QPixmap& pixmap) {
            EXPECT_EQ(pixmap.size(), QSize(size, size));
            return pixmap.toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
        };
        const QImage shown = picture(widget().windowIcon().pixmap(size));
        const QImage installed = picture(QPixmap(QString(JOIN_ICONS "/com.tavo.join-%1.png").arg(size)));
        double difference = 0; // of all channels of all pixels
        for (qsizetype i = 0; i < shown.sizeInBytes(); ++i)
            difference += std::abs(int{shown.constBits()[i]} - int{installed.constBits()[i]});
        EXPECT_LT(difference / static_cast<double>(shown.sizeInBytes()), 4) << size;
    }
}

TEST_F(QtWindowsTest, NamesThatAreNoneThrow) {
    EXPECT_THROW(windows.load("NoSuchWindow"), Exception);
    EXPECT_THROW(window->textField("noSuchOutlet"), Exception);
    EXPECT_THROW(window->textField("infoLabel"), Exception);
    EXPECT_THROW(window->progressIndicator("infoLabel"), Exception);
}

TEST(SpinningIndicator, TurnsOnlyWhileItIsAnimatedAndHasNoValue) {
    SpinningIndicator indicator;
    indicator.resize(36, 36);
    indicator.startAnimation();
    const QImage before = indicator.grab().toImage();
    EXPECT_TRUE(turnUntil([&] { return indicator.grab().toImage() != before; }));
    const auto turnsAt = [&] {
        int frames = 0;
        QtMainQueue queue;
        QtTimers timers{queue};
        const auto clock = timers.repeating(std::chrono::milliseconds(50), [&] { ++frames; });
        const QImage still = indicator.grab().toImage();
        turnUntil([&] { return frames == 8; });
        return indicator.grab().toImage() != still;
    };
    indicator.stopAnimation();
    EXPECT_FALSE(turnsAt());
    indicator.startAnimation();
    indicator.setValue(ProgressValue{0.25, "1 of 4 MB"});
    const QImage quarter = indicator.grab().toImage();
    EXPECT_FALSE(turnsAt());
    EXPECT_EQ(indicator.toolTip(), "1 of 4 MB");
    EXPECT_EQ(indicator.accessibleDescription(), "1 of 4 MB");
    indicator.setValue(ProgressValue{0.5, "2 of 4 MB"});
    EXPECT_NE(indicator.grab().toImage(), quarter);
    indicator.setValue(std::nullopt);
    EXPECT_TRUE(turnsAt());
}

TEST(QtMainQueue, RunsWorkOfAnyThreadInItsOrderOnTheMainThread) {
    QtMainQueue queue;
    std::vector<int> order;
    const auto mainThread = std::this_thread::get_id();
    std::thread([&] {
        for (int i = 0; i < 100; ++i)
            queue.enqueue([&order, i, mainThread] {
                EXPECT_EQ(std::this_thread::get_id(), mainThread);
                order.push_back(i);
            });
    }).join();
    EXPECT_TRUE(order.empty());
    ASSERT_TRUE(turnUntil([&] { return order.size() == 100; }));
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST_F(QtWindowsTest, WhileTheLogicWaitsWindowsLiveAndNoLogicRuns) {
    QtWaiting waiting(queue);
    QtTimers timers(queue);
    bool hasRun = false;
    const auto timer = timers.repeating(std::chrono::milliseconds(1), [&] { hasRun = true; });
    queue.enqueue([&] { hasRun = true; });
    window->progressIndicator("progress").startAnimation();
    window->makeKeyAndOrderFront();
    std::promise<void> end;
    QTimer::singleShot(0, &widget(), [&] {
        const QImage before = widget().grab().toImage();
        EXPECT_TRUE(turnUntil([&] { return widget().grab().toImage() != before; }));
        waiting.during([&] { end.set_value(); }); // what leaving does must not wait for the wait
    });
    const auto thread = waiting.during([&] {
        end.get_future().wait();
        return std::this_thread::get_id();
    });
    EXPECT_NE(thread, std::this_thread::get_id());
    EXPECT_FALSE(hasRun);
    EXPECT_TRUE(turnUntil([&] { return hasRun; }));
    EXPECT_THROW(waiting.during([] { throw Exception("the work's"); }), Exception);
}

TEST(QtTimers, ATimerFiresAgainAndAgainUntilItIsDestroyed) {
    QtMainQueue queue;
    QtTimers timers(queue);
    int fired = 0;
    auto timer = timers.repeating(std::chrono::milliseconds(1), [&] { ++fired; });
    EXPECT_TRUE(turnUntil([&] { return fired >= 3; }));
    timer.reset();
    const int last = fired;
    int others = 0;
    const auto other = timers.repeating(std::chrono::milliseconds(1), [&] { ++others; });
    EXPECT_TRUE(turnUntil([&] { return others == 5; }));
    EXPECT_EQ(fired, last);
}

} // namespace
} // namespace join::platform
