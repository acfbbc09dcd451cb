#pragma once

#include "platform/Windows.h"

#include <memory>
#include <string>

namespace join {

/// The base of the window controllers: loads its interface file when the window is needed first. Main thread
/// only.
class WindowController {
public:
    explicit WindowController(std::string windowNibName);
    virtual ~WindowController();
    WindowController(const WindowController&) = delete;
    WindowController& operator=(const WindowController&) = delete;

    /// Brings the window to the front with the keyboard; it has been painted when this returns.
    virtual void showWindow();

    /// Whether the window is on the screen. Does not load it.
    bool isVisible() const;

protected:
    /// Sets the window up, once it has been loaded.
    virtual void windowDidLoad() = 0;

    /// The loaded interface file.
    platform::Interface& interface();

    /// Takes a loaded window off the screen.
    void orderOut();

private:
    std::string windowNibName_;
    std::unique_ptr<platform::Interface> interface_;
};

/// Moves a window to the middle of the main screen, keeping its size.
void centreOnMainScreen(platform::Window& window);

} // namespace join
