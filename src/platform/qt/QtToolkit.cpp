#include "platform/qt/QtToolkit.h"

#include <QApplication>
#include <QStringList>

#include <fontconfig/fontconfig.h>

#include <cstdlib>
#include <future>
#include <iostream>
#include <sysexits.h>

namespace join::platform {

namespace {

/// What the toolkit reports during its setup.
QStringList& messages() {
    static QStringList kept;
    return kept;
}

/// When the toolkit finds no display, it returns no error: it only prints messages, and then ends the process
/// with a signal.
void takeMessage(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text) {
    messages() << text;
    if (type != QtFatalMsg)
        return;
    // The first message is the cause of the others.
    const std::string reason = messages().front().simplified().toStdString();
    std::cerr << "Join: there is no display to show a window on: " << reason << '\n';
    std::_Exit(EX_UNAVAILABLE);
}

} // namespace

QtToolkit::QtToolkit(char** arguments) {
    // Nothing is drawn with OpenGL, and looking for it takes time. Child processes must not inherit this
    // setting.
    constexpr const char* openGl = "QT_XCB_GL_INTEGRATION";
    const bool isSet = qEnvironmentVariableIsSet(openGl);
    if (!isSet)
        qputenv(openGl, "none");
    qInstallMessageHandler(takeMessage);
    {
        // The toolkit reads the configuration of the fonts only when the first text has to wait for it. Meanwhile
        // it sets no environment variable, which the other thread might be reading.
        const std::future<void> fonts = std::async([] { FcInit(); });
        application_ = std::make_unique<QApplication>(argumentCount_, arguments);
    }
    qInstallMessageHandler(nullptr);
    for (const QString& message : messages())
        std::cerr << message.toStdString() << '\n';
    messages().clear();
    if (!isSet)
        qunsetenv(openGl);
    QApplication::setApplicationName("Join");
    QApplication::setDesktopFileName("com.tavo.join"); // desktops find the icon by this name
}

QtToolkit::~QtToolkit() = default;

} // namespace join::platform
