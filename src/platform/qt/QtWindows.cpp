#include "platform/qt/QtWindows.h"

#include "platform/Exception.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/QtWindow.h"
#include "platform/qt/SpinningIndicator.h"
#include "ui_TavoJoinWindow.h"

#include <QGuiApplication>
#include <QLabel>
#include <QScreen>

#include <algorithm>
#include <array>
#include <map>
#include <string_view>

namespace join::platform {

namespace {

class QtTextField final : public TextField {
public:
    explicit QtTextField(QLabel& label) : label_(label) { label_.setTextFormat(Qt::PlainText); }
    void setStringValue(const std::string& text) override { label_.setText(QString::fromStdString(text)); }

private:
    QLabel& label_;
};

class QtProgressIndicator final : public ProgressIndicator {
public:
    explicit QtProgressIndicator(SpinningIndicator& indicator) : indicator_(indicator) {}
    void startAnimation() override { indicator_.setAnimated(true); }
    void stopAnimation() override { indicator_.setAnimated(false); }
    void setHidden(bool hidden) override { indicator_.setHidden(hidden); }

private:
    SpinningIndicator& indicator_;
};

class QtInterface final : public Interface {
public:
    QtInterface(std::unique_ptr<TopWidget> widget, QtMainQueue& mainQueue)
        : widget_(std::move(widget)), window_(*widget_, mainQueue) {}

    Window& window() override { return window_; }
    TextField& textField(const std::string& outlet) override {
        return wrapped<QtTextField, QLabel>(textFields_, outlet);
    }
    ProgressIndicator& progressIndicator(const std::string& outlet) override {
        return wrapped<QtProgressIndicator, SpinningIndicator>(indicators_, outlet);
    }

private:
    template <class Wrapper, class Widget>
    Wrapper& wrapped(std::map<std::string, Wrapper>& wrappers, const std::string& outlet) {
        if (const auto found = wrappers.find(outlet); found != wrappers.end())
            return found->second;
        auto* const widget =
            dynamic_cast<Widget*>(widget_->findChild<QWidget*>(QString::fromStdString(outlet)));
        if (!widget)
            throw Exception("The interface file " + widget_->objectName().toStdString() + " has no outlet " +
                            outlet + " of that kind");
        return wrappers.try_emplace(outlet, *widget).first->second;
    }

    std::unique_ptr<TopWidget> widget_;
    QtWindow window_;
    std::map<std::string, QtTextField> textFields_;
    std::map<std::string, QtProgressIndicator> indicators_;
};

template <class Form>
void setUp(QWidget& widget) {
    Form().setupUi(&widget);
}

struct InterfaceFile {
    std::string_view name;
    void (*setUp)(QWidget&);
};
constexpr std::array interfaceFiles = {InterfaceFile{"TavoJoinWindow", setUp<Ui::TavoJoinWindow>}};

} // namespace

QtWindows::QtWindows(QtMainQueue& mainQueue) : mainQueue_(mainQueue) {}

std::unique_ptr<Interface> QtWindows::load(const std::string& name) {
    const auto file = std::ranges::find(interfaceFiles, name, &InterfaceFile::name);
    if (file == interfaceFiles.end())
        throw Exception("There is no interface file " + name);
    auto widget = std::make_unique<TopWidget>();
    file->setUp(*widget);
    return std::make_unique<QtInterface>(std::move(widget), mainQueue_);
}

Size QtWindows::mainScreenSize() {
    const QSize size = QGuiApplication::primaryScreen()->size();
    return {size.width(), size.height()};
}

} // namespace join::platform
