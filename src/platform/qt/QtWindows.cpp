#include "platform/qt/QtWindows.h"

#include "platform/Exception.h"
#include "platform/qt/QtControls.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/QtWindow.h"
#include "platform/qt/SpinningIndicator.h"
#include "ui_ErrorWindow.h"
#include "ui_TavoJoinMainWindow.h"
#include "ui_TavoJoinWindow.h"

#include <QApplication>
#include <QScreen>

#include <algorithm>
#include <array>
#include <map>
#include <string_view>

namespace join::platform {

namespace {

class QtInterface final : public Interface {
public:
    QtInterface(std::unique_ptr<TopWidget> widget, QtMainQueue& mainQueue)
        : widget_(std::move(widget)), mainQueue_(mainQueue), window_(*widget_, mainQueue) {}

    Window& window() override { return window_; }

    Label& label(const std::string& outlet) override {
        return made(labels_, outlet, [&] { return std::make_unique<QtLabel>(get<QLabel>(outlet)); });
    }

    TextField& textField(const std::string& outlet) override {
        return made(textFields_, outlet,
                    [&] { return std::make_unique<QtLineEdit>(get<QLineEdit>(outlet)); });
    }

    Button& button(const std::string& outlet) override {
        return made(buttons_, outlet,
                    [&] { return std::make_unique<QtButton>(get<QPushButton>(outlet), mainQueue_); });
    }

    ProgressIndicator& progressIndicator(const std::string& outlet) override {
        return made(indicators_, outlet,
                    [&] { return std::make_unique<QtProgressIndicator>(get<SpinningIndicator>(outlet)); });
    }

private:
    template <class Widget>
    Widget& get(const std::string& outlet) const {
        if (auto* const widget =
                dynamic_cast<Widget*>(widget_->findChild<QWidget*>(QString::fromStdString(outlet))))
            return *widget;
        throw Exception("The interface file " + widget_->objectName().toStdString() + " has no outlet " +
                        outlet + " of that kind");
    }

    /// Returns the control of that outlet, creating it on first use.
    template <class Control, class Maker>
    static Control& made(std::map<std::string, std::unique_ptr<Control>>& controls, const std::string& outlet,
                         Maker make) {
        std::unique_ptr<Control>& control = controls[outlet];
        if (!control)
            control = make();
        return *control;
    }

    std::unique_ptr<TopWidget> widget_;
    QtMainQueue& mainQueue_;
    QtWindow window_;
    std::map<std::string, std::unique_ptr<Label>> labels_;
    std::map<std::string, std::unique_ptr<TextField>> textFields_;
    std::map<std::string, std::unique_ptr<Button>> buttons_;
    std::map<std::string, std::unique_ptr<ProgressIndicator>> indicators_;
};

template <class Form>
void setUp(QWidget& widget) {
    Form().setupUi(&widget);
}

struct InterfaceFile {
    std::string_view name;
    void (*setUp)(QWidget&);
};
constexpr std::array interfaceFiles = {
    InterfaceFile{"TavoJoinMainWindow", setUp<Ui::TavoJoinMainWindow>},
    InterfaceFile{"TavoJoinWindow", setUp<Ui::TavoJoinWindow>},
    InterfaceFile{"ErrorWindow", setUp<Ui::ErrorWindow>},
};

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

bool QtWindows::bringToFront(const std::string& activationToken) {
    // The toolkit looks for the token here. X11 does not use one.
    if (!activationToken.empty() && QGuiApplication::platformName().startsWith("wayland"))
        qputenv("XDG_ACTIVATION_TOKEN", QByteArray::fromStdString(activationToken));
    bool isAnyShown = false;
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->isVisible()) {
            window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
            window->raise();
            window->activateWindow();
            isAnyShown = true;
        }
    return isAnyShown;
}

} // namespace join::platform
