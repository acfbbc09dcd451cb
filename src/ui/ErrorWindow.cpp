#include "ui/ErrorWindow.h"

#include "core/Logging.h"

namespace join {

void ErrorWindow::showWindow() {
    log("%s : This system does not meet the requirements; this version has no window that says so",
        "-[ErrorWindow showWindow:]");
}

} // namespace join
