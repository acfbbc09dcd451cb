#pragma once

#include "platform/Windows.h"

#include <QWidget>

#include <functional>

namespace join::platform {

class QtMainQueue;

/// The top widget of an interface file. Reports when it has been painted, and asks before it is closed.
class TopWidget final : public QWidget {
public:
    std::function<bool()> shouldClose;
    std::function<void()> painted;

protected:
    void closeEvent(QCloseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};

/// A window on a top widget, which it does not own.
class QtWindow final : public Window {
public:
    QtWindow(TopWidget& widget, QtMainQueue& mainQueue);

    Size frameSize() const override;
    void setFrameOrigin(Point origin) override;
    void setLevel(int level) override;
    void setBackgroundColor(Color color) override;
    void setTitle(const std::string& title) override;
    void hideStandardButton(StandardButton button) override;
    void setShouldClose(std::function<bool()> shouldClose) override;
    void display() override;
    void makeKeyAndOrderFront() override;
    void orderOut() override;
    bool isVisible() const override;

private:
    void waitUntilPainted();

    TopWidget& widget_;
    QtMainQueue& mainQueue_;
};

} // namespace join::platform
