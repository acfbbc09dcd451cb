#pragma once

#include "platform/Windows.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace join::platform {

class QtMainQueue;
class SpinningIndicator;

/// A line of text to read. Like all controls here, it does not own its widget.
class QtLabel final : public Label {
public:
    explicit QtLabel(QLabel& label);

    void setStringValue(const std::string& text) override;
    void setTextColor(Color color) override;
    void setMessage(const MessageText& message) override;

private:
    QLabel& label_;
};

/// A line of text to type into. Screen readers use its prompt as its name.
class QtLineEdit final : public TextField {
public:
    explicit QtLineEdit(QLineEdit& edit);

    void setStringValue(const std::string& text) override;
    std::string stringValue() const override;
    void setPlaceholder(const std::string& text) override;
    void setAttributedPlaceholder(const std::string& text, const TextAttributes& attributes) override;
    void becomeFirstResponder() override;

private:
    void setPrompt(const std::string& prompt, const QColor& color);

    QLineEdit& edit_;
    int leastWidth_;
};

/// A button. Return also clicks its window's default button, and Escape the one with the property "cancels".
class QtButton final : public Button {
public:
    QtButton(QPushButton& button, QtMainQueue& mainQueue);

    void setTitle(const std::string& title) override;
    void setEnabled(bool enabled) override;
    void setAction(std::function<void()> action) override;

private:
    void act();

    QPushButton& button_;
    QtMainQueue& mainQueue_;
    std::function<void()> action_;
    bool isActing_ = false;
};

class QtProgressIndicator final : public ProgressIndicator {
public:
    explicit QtProgressIndicator(SpinningIndicator& indicator);

    void startAnimation() override;
    void stopAnimation() override;
    void setHidden(bool hidden) override;

private:
    SpinningIndicator& indicator_;
};

} // namespace join::platform
