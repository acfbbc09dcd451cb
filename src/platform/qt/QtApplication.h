#pragma once

#include "platform/Application.h"

#include <functional>
#include <string>

namespace join::platform {

/// The application on Qt's event loop. The QApplication must exist before this object and outlive it.
/// Property lists are read, and the end of the launch is queued, through services().
class QtApplication final : public Application {
public:
    /// What to do between the calls of the delegate.
    struct Steps {
        std::function<void()> deliverLaunchUrls; ///< before launching is finished
        std::function<void()> beforeEnd;         ///< on termination, after the delegate's last call
    };

    QtApplication(std::string bundlePath, Steps steps);

    [[noreturn]] void run(ApplicationDelegate& delegate) override;
    [[noreturn]] void terminate() override;
    [[noreturn]] void exitImmediately() override;
    std::string bundlePath() override;
    std::string bundleIdentifier() override;
    SystemVersion systemVersion() override;

private:
    std::string bundlePath_;
    Steps steps_;
    ApplicationDelegate* delegate_ = nullptr;
};

} // namespace join::platform
