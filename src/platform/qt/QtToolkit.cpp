#include "platform/qt/QtToolkit.h"

#include <QApplication>
#include <QStringList>

#include <cstdlib>
#include <iostream>
#include <sysexits.h>

namespace join::platform {

namespace {

/// What the toolkit says while it is set up. It has no error to return when it finds no display, only these
/// words, and ends the process by a signal behind them.
class Messages {
public:
    Messages() { qInstallMessageHandler(take); }
    ~Messages() {
        qInstallMessageHandler(nullptr);
        for (const QString& message : kept())
            std::cerr << message.toStdString() << '\n';
        kept().clear();
    }
    Messages(const Messages&) = delete;
    Messages& operator=(const Messages&) = delete;

private:
    static QStringList& kept() {
        static QStringList messages;
        return messages;
    }

    static void take(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text) {
        if (type == QtFatalMsg) {
            // The first trouble is the cause of those that followed.
            const QString reason = (kept() << text).front().simplified();
            std::cerr << "Join: there is no display to show a window on: " << reason.toStdString() << '\n';
            std::_Exit(EX_UNAVAILABLE);
        }
        kept().push_back(text);
    }
};

} // namespace

QtToolkit::QtToolkit(char** arguments) {
    // Nothing is drawn with OpenGL, and looking for it takes time. Children are not to see this.
    constexpr const char* openGl = "QT_XCB_GL_INTEGRATION";
    const bool isSet = qEnvironmentVariableIsSet(openGl);
    if (!isSet)
        qputenv(openGl, "none");
    {
        const Messages messages;
        application_ = std::make_unique<QApplication>(argumentCount_, arguments);
    }
    if (!isSet)
        qunsetenv(openGl);
    QApplication::setApplicationName("Join");
    QApplication::setDesktopFileName("com.tavo.join"); // by which a desktop finds the icon
}

QtToolkit::~QtToolkit() = default;

} // namespace join::platform
