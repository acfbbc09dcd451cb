#include "platform/qt/QtWindows.h"

#include "platform/Exception.h"
#include "platform/qt/QtWindow.h"
#include "platform/qt/SpinningIndicator.h"
#include "ui_ErrorWindow.h"
#include "ui_TavoJoinMainWindow.h"
#include "ui_TavoJoinWindow.h"

#include <QAccessibleWidget>
#include <QApplication>

#include <algorithm>
#include <array>
#include <string_view>

namespace join::platform {

namespace {

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

/// Tells screen readers what the toolkit does not know.
QAccessibleInterface* accessible(const QString& /*kind*/, QObject* object) {
    auto* const indicator = dynamic_cast<SpinningIndicator*>(object);
    return indicator ? new QAccessibleWidget(indicator, QAccessible::ProgressBar) : nullptr;
}

} // namespace

QtWindows::QtWindows(QtMainQueue& mainQueue) : mainQueue_(mainQueue) {
    QAccessible::installFactory(accessible);
}

std::unique_ptr<Window> QtWindows::load(const std::string& name) {
    const auto file = std::ranges::find(interfaceFiles, name, &InterfaceFile::name);
    if (file == interfaceFiles.end())
        throw Exception("There is no interface file " + name);
    return std::make_unique<QtWindow>(file->setUp, mainQueue_);
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
