#pragma once

#include "platform/Application.h"

#include <functional>
#include <string>

namespace join::platform {

/// The application on Qt's event loop. A QApplication exists before this object and outlives it. It reads
/// property lists through services().
class QtApplication final : public Application {
public:
    /// What happens between the delegate's calls.
    struct Steps {
        std::function<void()> afterFirstWindow;  ///< once awakeFromNib has put the first window on the screen
        std::function<void()> deliverLaunchUrls; ///< before launching is finished
        std::function<void()> beforeEnd; ///< when the application terminates, after the delegate's last call
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
