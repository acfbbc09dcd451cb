#pragma once

#include <functional>
#include <memory>
#include <string>

namespace join::platform {

struct Point {
    int x = 0;
    int y = 0;
};

/// In logical pixels.
struct Size {
    int width = 0;
    int height = 0;
};

struct Color {
    unsigned char red = 0;
    unsigned char green = 0;
    unsigned char blue = 0;
};
inline constexpr Color white{255, 255, 255};

/// Levels that keep a window above those of lower ones, as far as the desktop allows it.
inline constexpr int normalWindowLevel = 0;
inline constexpr int floatingWindowLevel = 3;
inline constexpr int statusWindowLevel = 25;

enum class StandardButton { close, minimise, zoom };

/// A window of an interface file. Main thread only, like everything here.
class Window {
public:
    virtual ~Window() = default;

    virtual Size frameSize() const = 0;
    virtual void setFrameOrigin(Point origin) = 0;
    virtual void setLevel(int level) = 0;
    virtual void setBackgroundColor(Color color) = 0;
    virtual void setTitle(const std::string& title) = 0;
    virtual void hideStandardButton(StandardButton button) = 0;

    /// Asked when the user closes the window; it closes when the answer is true.
    virtual void setShouldClose(std::function<bool()> shouldClose) = 0;

    /// Draws what has changed, now.
    virtual void display() = 0;

    /// Puts the window on the screen, in front, with the keyboard. It has been painted when this returns.
    virtual void makeKeyAndOrderFront() = 0;

    /// Takes the window off the screen.
    virtual void orderOut() = 0;
    virtual bool isVisible() const = 0;
};

class TextField {
public:
    virtual ~TextField() = default;

    /// Shows the characters of the text, none of which has a meaning.
    virtual void setStringValue(const std::string& text) = 0;
};

class ProgressIndicator {
public:
    virtual ~ProgressIndicator() = default;

    virtual void startAnimation() = 0;
    virtual void stopAnimation() = 0;
    virtual void setHidden(bool hidden) = 0;
};

/// A loaded interface file: one window and its controls, the outlets, by their names. It owns them all. An
/// outlet that the file does not hold, or holds as another kind of control, throws Exception.
class Interface {
public:
    virtual ~Interface() = default;

    virtual Window& window() = 0;
    virtual TextField& textField(const std::string& outlet) = 0;
    virtual ProgressIndicator& progressIndicator(const std::string& outlet) = 0;
};

class Windows {
public:
    virtual ~Windows() = default;

    /// Loads a named interface file; its window is not on the screen yet. Throws Exception for a name that is
    /// none.
    virtual std::unique_ptr<Interface> load(const std::string& name) = 0;

    /// The size of the main screen.
    virtual Size mainScreenSize() = 0;
};

/// The application's strings table.
class Strings {
public:
    virtual ~Strings() = default;

    /// The text of the key in the user's language; the key itself when it has none.
    virtual std::string localized(const std::string& key) = 0;
};

} // namespace join::platform
