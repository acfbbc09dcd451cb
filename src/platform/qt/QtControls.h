#pragma once

#include "platform/Windows.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace join::platform {

class QtMainQueue;

/// A line of text to read, larger than others if it has the property "large". Like all controls here, it does
/// not own its widget.
class QtLabel final : public Label {
public:
    explicit QtLabel(QLabel& label);

    void setStringValue(const std::string& text) override;
    void announce() override;
    void setMessage(const MessageText& message) override;

private:
    QLabel& label_;
};

/// A line of text to type into. Screen readers read out its prompt as its description.
class QtLineEdit final : public TextField {
public:
    explicit QtLineEdit(QLineEdit& edit);

    void setStringValue(const std::string& text) override;
    std::string stringValue() const override;
    void setPlaceholder(const std::string& text) override;
    void setErrorPlaceholder(const std::string& text) override;
    void becomeFirstResponder() override;

private:
    void setPrompt(const std::string& prompt, const QColor& color, const QFont& font);
    void followText();

    QLineEdit& edit_;
    int leastWidth_;
    QFont font_; ///< of what is typed
    QFont promptFont_;
};

class QtButton final : public Button {
public:
    QtButton(QPushButton& button, QtMainQueue& mainQueue);

    void setTitle(const std::string& title) override;
    void setAction(std::function<void()> action) override;

private:
    void act();

    QPushButton& button_;
    QtMainQueue& mainQueue_;
    std::function<void()> action_;
    bool isActing_ = false;
};

} // namespace join::platform
