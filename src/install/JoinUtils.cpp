#include "install/JoinUtils.h"

#include "base/Logging.h"
#include "diag/MonitoringHandler.h"
#include "platform/Services.h"
#include "platform/Workspace.h"

#include <vector>

namespace join {

bool JoinUtils::workspaceLaunchApplication(const std::string& bundlePath) {
    constexpr auto method = "+[JoinUtils workspaceLaunchApplication:]";
    try {
        MonitoringHandler::addkey("M4",
                                  formatted("Agent launched time : %@", MonitoringHandler::currentTime()));
        const std::vector<std::string> arguments = {"-timestamps", MonitoringHandler::getJsonString()};
        platform::services().workspace->launchApplication(bundlePath, arguments);
        log("%s : LaunchApplication: %@ launched successfully with args : %@", method,
            lastPathComponent(bundlePath), formatted("(%@, %@)", arguments[0], arguments[1]));
        return true;
    } catch (const std::exception& exception) {
        log(" Exception in PingServer.launchApplicationWith() : %@", exception.what());
        return false;
    }
}

} // namespace join
