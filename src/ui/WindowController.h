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
    void showWindow();

    /// Takes the window off the screen, if it has been loaded. The program continues.
    void orderOut();

    /// Returns whether the window is on the screen. Does not load it.
    bool isVisible() const;

protected:
    /// Sets up the window after it has been loaded.
    virtual void windowDidLoad() = 0;

    /// Returns the window, loading it if necessary.
    platform::Window& window();

    /// Ends the session in the log and quits. Never returns.
    static void quit();

private:
    std::string windowNibName_;
    std::unique_ptr<platform::Window> window_;
};

/// Returns the text of the key in the user's language.
std::string localized(const std::string& key);

} // namespace join
