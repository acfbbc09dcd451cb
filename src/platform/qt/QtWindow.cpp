#include "platform/qt/QtWindow.h"

#include "platform/qt/QtMainQueue.h"

#include <QCloseEvent>
#include <QEventLoop>
#include <QGuiApplication>
#include <QPalette>
#include <QScreen>
#include <QTimer>

#include <chrono>
#include <utility>

namespace join::platform {

namespace {

// A desktop that shows nothing within this time, such as a locked one, must not delay the join.
constexpr std::chrono::milliseconds longestWaitForPainting{500};

/// On Wayland the compositor decides, and the toolkit warns of any attempt.
bool mayRaise() { return !QGuiApplication::platformName().startsWith("wayland"); }

Qt::WindowFlags flagOf(StandardButton button) {
    switch (button) {
    case StandardButton::close:
        return Qt::WindowCloseButtonHint;
    case StandardButton::minimise:
        return Qt::WindowMinimizeButtonHint;
    case StandardButton::zoom:
        return Qt::WindowMaximizeButtonHint;
    }
    return {};
}

} // namespace

void TopWidget::closeEvent(QCloseEvent* event) { event->setAccepted(!shouldClose || shouldClose()); }

void TopWidget::paintEvent(QPaintEvent* /*event*/) {
    if (painted)
        painted();
}

QtWindow::QtWindow(TopWidget& widget, QtMainQueue& mainQueue) : widget_(widget), mainQueue_(mainQueue) {
    widget_.setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                           Qt::WindowSystemMenuHint | Qt::WindowMinMaxButtonsHint |
                           Qt::WindowCloseButtonHint);
}

Size QtWindow::frameSize() const {
    const QSize size = widget_.frameGeometry().size();
    return {size.width(), size.height()};
}

void QtWindow::setFrameOrigin(Point origin) {
    widget_.move(QGuiApplication::primaryScreen()->geometry().topLeft() + QPoint(origin.x, origin.y));
}

void QtWindow::setLevel(int level) {
    widget_.setWindowFlag(Qt::WindowStaysOnTopHint, level > normalWindowLevel);
}

void QtWindow::setBackgroundColor(Color color) {
    // Text must stay readable in every desktop theme.
    const QColor background(color.red, color.green, color.blue);
    QPalette palette = widget_.palette();
    palette.setColor(QPalette::Window, background);
    palette.setColor(QPalette::WindowText, background.lightness() > 127 ? Qt::black : Qt::white);
    widget_.setPalette(palette);
    widget_.setAutoFillBackground(true);
}

void QtWindow::setTitle(const std::string& title) { widget_.setWindowTitle(QString::fromStdString(title)); }

void QtWindow::hideStandardButton(StandardButton button) {
    widget_.setWindowFlags(widget_.windowFlags() & ~flagOf(button));
}

void QtWindow::setShouldClose(std::function<bool()> shouldClose) {
    widget_.shouldClose = std::move(shouldClose);
}

void QtWindow::display() {
    if (!widget_.isVisible())
        return;
    widget_.update();
    waitUntilPainted();
}

void QtWindow::makeKeyAndOrderFront() {
    const bool comesOnScreen = !widget_.isVisible();
    widget_.show();
    if (mayRaise()) {
        widget_.raise();
        widget_.activateWindow();
    }
    if (comesOnScreen)
        waitUntilPainted();
}

void QtWindow::waitUntilPainted() {
    const QtMainQueue::Hold hold(mainQueue_);
    QEventLoop loop;
    // One more turn of the loop after painting sends the picture to the screen.
    widget_.painted = [&loop] { QTimer::singleShot(0, &loop, &QEventLoop::quit); };
    QTimer::singleShot(longestWaitForPainting, &loop, &QEventLoop::quit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    widget_.painted = nullptr;
}

void QtWindow::orderOut() { widget_.hide(); }

bool QtWindow::isVisible() const { return widget_.isVisible(); }

} // namespace join::platform
