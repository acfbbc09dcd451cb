#pragma once

#include "platform/Windows.h"

#include <string>

namespace join::platform {

class QtMainQueue;

/// Windows made with Qt Widgets, from interface files that are compiled in.
class QtWindows : public Windows {
public:
    explicit QtWindows(QtMainQueue& mainQueue);

    std::unique_ptr<Window> load(const std::string& name) override;

    /// Brings the visible windows to the front, as far as the desktop allows it. Wayland requires the
    /// activation token that it gave to the start that asks for this; the token is empty if there was none.
    /// Returns false if no window is visible. Main thread only.
    static bool bringToFront(const std::string& activationToken);

private:
    QtMainQueue& mainQueue_;
};

} // namespace join::platform
