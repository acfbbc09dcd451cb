#pragma once

#include "platform/Windows.h"
#include "platform/qt/QtControls.h"

#include <QDialog>

#include <functional>
#include <map>

namespace join::platform {

class QtMainQueue;

/// The top widget of an interface file. Escape clicks the button with the property "cancels", if there is
/// one, and Return the default button. Ctrl+W and Ctrl+Q close the window.
class TopWidget final : public QDialog {
public:
    TopWidget();

    std::function<void()> closed;
    std::function<void()> painted;

    void reject() override;

protected:
    void closeEvent(QCloseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};

/// A window made from a compiled interface file.
class QtWindow final : public Window {
public:
    QtWindow(void (*setUp)(QWidget&), QtMainQueue& mainQueue);

    Label& label(const std::string& outlet) override;
    TextField& textField(const std::string& outlet) override;
    Button& button(const std::string& outlet) override;
    ProgressIndicator& progressIndicator(const std::string& outlet) override;
    void setLevel(int level) override;
    void setTitle(const std::string& title) override;
    void setWhite() override;
    void hideCloseButton() override;
    void setCloseAction(std::function<void()> action) override;
    void setBusy(bool isBusy) override;
    void display() override;
    void makeKeyAndOrderFront() override;
    void orderOut() override;
    bool isVisible() const override;

private:
    void waitUntilPainted();

    TopWidget widget_;
    QtMainQueue& mainQueue_;
    std::map<std::string, QtLabel> labels_;
    std::map<std::string, QtLineEdit> textFields_;
    std::map<std::string, QtButton> buttons_;
};

} // namespace join::platform
