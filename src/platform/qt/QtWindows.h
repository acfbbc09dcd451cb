#pragma once

#include "platform/Windows.h"

#include <string>

namespace join::platform {

class QtMainQueue;

/// Windows on Qt Widgets, from the interface files that are compiled in.
class QtWindows final : public Windows {
public:
    explicit QtWindows(QtMainQueue& mainQueue);

    std::unique_ptr<Interface> load(const std::string& name) override;
    Size mainScreenSize() override;

    /// Brings the windows that are shown to the front, as far as the desktop lets them: on Wayland with the
    /// activation token that it gave to the start that asks for it; empty when it gave none. False when no
    /// window is shown. Main thread only.
    static bool bringToFront(const std::string& activationToken);

private:
    QtMainQueue& mainQueue_;
};

} // namespace join::platform
