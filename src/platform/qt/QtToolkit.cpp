#include "platform/qt/QtToolkit.h"

#include <QApplication>
#include <QStringList>

#include <cstdlib>
#include <iostream>
#include <sysexits.h>

namespace join::platform {

namespace {

/// What the toolkit says while it is set up.
QStringList& messages() {
    static QStringList kept;
    return kept;
}

/// The toolkit has no error to return when it finds no display, only words, and ends the process by a signal
/// behind them.
void takeMessage(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text) {
    messages() << text;
    if (type != QtFatalMsg)
        return;
    // The first trouble is the cause of those that followed.
    const std::string reason = messages().front().simplified().toStdString();
    std::cerr << "Join: there is no display to show a window on: " << reason << '\n';
    std::_Exit(EX_UNAVAILABLE);
}

} // namespace

QtToolkit::QtToolkit(char** arguments) {
    // Nothing is drawn with OpenGL, and looking for it takes time. Children are not to see this.
    constexpr const char* openGl = "QT_XCB_GL_INTEGRATION";
    const bool isSet = qEnvironmentVariableIsSet(openGl);
    if (!isSet)
        qputenv(openGl, "none");
    qInstallMessageHandler(takeMessage);
    application_ = std::make_unique<QApplication>(argumentCount_, arguments);
    qInstallMessageHandler(nullptr);
    for (const QString& message : messages())
        std::cerr << message.toStdString() << '\n';
    messages().clear();
    if (!isSet)
        qunsetenv(openGl);
    QApplication::setApplicationName("Join");
    QApplication::setDesktopFileName("com.tavo.join"); // by which a desktop finds the icon
}

QtToolkit::~QtToolkit() = default;

} // namespace join::platform
