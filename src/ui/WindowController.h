#pragma once

#include "platform/Windows.h"

#include <memory>
#include <string>

namespace join {

/// The base of the window controllers: loads its interface file on first use. Main thread only.
class WindowController {
public:
    explicit WindowController(std::string windowNibName);
    virtual ~WindowController();
    WindowController(const WindowController&) = delete;
    WindowController& operator=(const WindowController&) = delete;

    /// Brings the window to the front with the keyboard focus. The window has been painted when this returns.
    virtual void showWindow();

    /// Returns whether the window is on the screen. Does not load it.
    bool isVisible() const;

protected:
    /// Sets up the window after it has been loaded.
    virtual void windowDidLoad() = 0;

    /// Returns the interface file, loading it if necessary.
    platform::Interface& interface();

    /// Takes the window off the screen, if it has been loaded.
    void orderOut();

private:
    std::string windowNibName_;
    std::unique_ptr<platform::Interface> interface_;
};

/// Moves a window to the middle of the main screen, keeping its size.
void centreOnMainScreen(platform::Window& window);

} // namespace join
