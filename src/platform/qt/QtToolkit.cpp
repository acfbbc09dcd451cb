#include "platform/qt/QtToolkit.h"

#include <QApplication>

namespace join::platform {

QtToolkit::QtToolkit(char** arguments) {
    // Nothing is drawn with OpenGL, and looking for it takes time. Children are not to see this.
    constexpr const char* openGl = "QT_XCB_GL_INTEGRATION";
    const bool isSet = qEnvironmentVariableIsSet(openGl);
    if (!isSet)
        qputenv(openGl, "none");
    application_ = std::make_unique<QApplication>(argumentCount_, arguments);
    if (!isSet)
        qunsetenv(openGl);
    QApplication::setApplicationName("Join");
    QApplication::setDesktopFileName("com.tavo.join"); // by which a desktop finds the icon
}

QtToolkit::~QtToolkit() = default;

} // namespace join::platform
