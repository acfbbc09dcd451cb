#include "platform/qt/QtWindow.h"

#include "platform/Exception.h"
#include "platform/qt/AppIcon.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/SpinningIndicator.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QEventLoop>
#include <QPalette>
#include <QScreen>
#include <QShortcut>
#include <QTimer>

#include <chrono>
#include <utility>

namespace join::platform {

namespace {

// A desktop that shows nothing within this time, such as a locked one, must not delay the join.
constexpr std::chrono::milliseconds longestWaitForPainting{500};

// A join that needs no longer than this does without the icon, which takes a millisecond.
constexpr std::chrono::milliseconds iconDelay{50};

constexpr QColor lightButton(0xEF, 0xEF, 0xEF);

/// On Wayland the compositor decides, and the toolkit warns of any attempt.
bool mayRaise() { return !QGuiApplication::platformName().startsWith("wayland"); }

/// Makes the controls of a kind for the window's widgets of that kind.
template <class Widget, class Control, class... Services>
void make(std::map<std::string, Control>& controls, const QWidget& window, Services&... services) {
    for (Widget* widget : window.findChildren<Widget*>())
        controls.try_emplace(widget->objectName().toStdString(), *widget, services...);
}

Exception noOutlet(const std::string& outlet) {
    return Exception("The interface file has no outlet " + outlet + " of that kind");
}

template <class Control>
Control& at(std::map<std::string, Control>& controls, const std::string& outlet) {
    const auto found = controls.find(outlet);
    if (found == controls.end())
        throw noOutlet(outlet);
    return found->second;
}

} // namespace

TopWidget::TopWidget() {
    for (const int key : {Qt::Key_W, Qt::Key_Q}) { // owned by the window
        const auto* const shortcut = new QShortcut(QKeySequence(Qt::CTRL | key), this);
        QObject::connect(shortcut, &QShortcut::activated, this, &QWidget::close);
    }
}

void TopWidget::reject() {
    for (QPushButton* button : findChildren<QPushButton*>())
        if (button->property("cancels").toBool())
            button->click();
}

void TopWidget::closeEvent(QCloseEvent* /*event*/) {
    if (closed)
        closed();
}

void TopWidget::paintEvent(QPaintEvent* /*event*/) {
    if (painted)
        painted();
}

QtWindow::QtWindow(void (*setUp)(QWidget&), QtMainQueue& mainQueue) : mainQueue_(mainQueue) {
    setUp(widget_);
    // Desktops differ in the order of buttons.
    if (auto* const box = widget_.findChild<QDialogButtonBox*>())
        for (QPushButton* button : widget_.findChildren<QPushButton*>())
            box->addButton(button,
                           button->isDefault() ? QDialogButtonBox::AcceptRole : QDialogButtonBox::RejectRole);
    make<QLabel>(labels_, widget_);
    make<QLineEdit>(textFields_, widget_);
    make<QPushButton>(buttons_, widget_, mainQueue);
}

Label& QtWindow::label(const std::string& outlet) { return at(labels_, outlet); }

TextField& QtWindow::textField(const std::string& outlet) { return at(textFields_, outlet); }

Button& QtWindow::button(const std::string& outlet) { return at(buttons_, outlet); }

ProgressIndicator& QtWindow::progressIndicator(const std::string& outlet) {
    auto* const found =
        dynamic_cast<SpinningIndicator*>(widget_.findChild<QWidget*>(QString::fromStdString(outlet)));
    if (!found)
        throw noOutlet(outlet);
    return *found;
}

void QtWindow::setLevel(int level) { widget_.setWindowFlag(Qt::WindowStaysOnTopHint, level > 0); }

void QtWindow::setTitle(const std::string& title) { widget_.setWindowTitle(QString::fromStdString(title)); }

void QtWindow::setWhite() {
    QPalette palette(lightButton, Qt::white);
    for (const auto role : {QPalette::Highlight, QPalette::HighlightedText}) // the user's own colour
        palette.setColor(role, QApplication::palette().color(role));
    widget_.setPalette(palette);
}

void QtWindow::hideCloseButton() { widget_.setWindowFlag(Qt::WindowCloseButtonHint, false); }

void QtWindow::setCloseAction(std::function<void()> action) { widget_.closed = std::move(action); }

void QtWindow::setBusy(bool isBusy) {
    for (QLineEdit* edit : widget_.findChildren<QLineEdit*>())
        edit->setEnabled(!isBusy);
    for (QPushButton* button : widget_.findChildren<QPushButton*>())
        button->setEnabled(!isBusy || !button->isDefault());
    isBusy ? widget_.setCursor(Qt::BusyCursor) : widget_.unsetCursor();
}

void QtWindow::display() {
    if (!widget_.isVisible())
        return;
    widget_.update();
    waitUntilPainted();
}

void QtWindow::makeKeyAndOrderFront() {
    if (!widget_.isVisible()) {
        widget_.adjustSize();
        widget_.move(QGuiApplication::primaryScreen()->geometry().center() - widget_.rect().center());
        widget_.show();
        waitUntilPainted();
    }
    if (mayRaise()) {
        widget_.raise();
        widget_.activateWindow();
    }
    if (QApplication::windowIcon().isNull())
        QTimer::singleShot(iconDelay, [] { QApplication::setWindowIcon(AppIcon::inAllSizes()); });
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
