#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
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
inline constexpr Color black{0, 0, 0};
inline constexpr Color red{255, 0, 0};
inline constexpr Color blue{0, 0, 255};

/// How a text is drawn: its colour, and its size in the system's font.
struct TextAttributes {
    Color color;
    int pointSize = 0;
};

/// A message, part of which may be a link. The link's place is given in bytes of the UTF-8 text.
struct MessageText {
    struct Link {
        std::size_t offset = 0;
        std::size_t length = 0;
        std::string address; ///< opened in the user's browser
        Color color;
    };
    std::string text;
    std::string fontFamily;
    int pointSize = 0;
    std::optional<Link> link;
};

/// Levels that keep a window above those of lower levels, as far as the desktop allows it.
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

    /// Sets the function that decides whether the window closes when the user asks for it.
    virtual void setShouldClose(std::function<bool()> shouldClose) = 0;

    /// Draws what has changed, if the window is on the screen. It has been painted when this returns.
    virtual void display() = 0;

    /// Puts the window on the screen, in front, with the keyboard focus. It has been painted when this
    /// returns.
    virtual void makeKeyAndOrderFront() = 0;

    /// Takes the window off the screen.
    virtual void orderOut() = 0;
    virtual bool isVisible() const = 0;
};

/// A text to read. Every character is shown as it is: there is no markup.
class Label {
public:
    virtual ~Label() = default;

    virtual void setStringValue(const std::string& text) = 0;
    virtual void setTextColor(Color color) = 0;

    /// Shows a message, whose link works with mouse and keyboard.
    virtual void setMessage(const MessageText& message) = 0;
};

/// A line to type into.
class TextField {
public:
    virtual ~TextField() = default;

    virtual void setStringValue(const std::string& text) = 0;

    /// Returns the text in the field, with line breaks as blanks.
    virtual std::string stringValue() const = 0;

    /// Sets the prompt that is shown while the field is empty.
    virtual void setPlaceholder(const std::string& text) = 0;
    virtual void setAttributedPlaceholder(const std::string& text, const TextAttributes& attributes) = 0;

    /// Takes the keyboard focus.
    virtual void becomeFirstResponder() = 0;
};

class Button {
public:
    virtual ~Button() = default;

    virtual void setTitle(const std::string& title) = 0;
    virtual void setEnabled(bool enabled) = 0;

    /// Sets what a click or its keyboard equivalent does. A click while the action runs is lost.
    virtual void setAction(std::function<void()> action) = 0;
};

class ProgressIndicator {
public:
    virtual ~ProgressIndicator() = default;

    virtual void startAnimation() = 0;
    virtual void stopAnimation() = 0;
    virtual void setHidden(bool hidden) = 0;
};

/// A loaded interface file: one window and its controls, the outlets, by name. It owns them all. Throws
/// Exception for an outlet that the file does not contain, or contains as another kind of control.
class Interface {
public:
    virtual ~Interface() = default;

    virtual Window& window() = 0;
    virtual Label& label(const std::string& outlet) = 0;
    virtual TextField& textField(const std::string& outlet) = 0;
    virtual Button& button(const std::string& outlet) = 0;
    virtual ProgressIndicator& progressIndicator(const std::string& outlet) = 0;
};

class Windows {
public:
    virtual ~Windows() = default;

    /// Loads a named interface file; its window is not on the screen yet. Throws Exception if there is no
    /// file of that name.
    virtual std::unique_ptr<Interface> load(const std::string& name) = 0;

    /// Returns the size of the main screen.
    virtual Size mainScreenSize() = 0;
};

/// The application's strings table.
class Strings {
public:
    virtual ~Strings() = default;

    /// Returns the text of the key in the user's language, or the key itself if there is none.
    virtual std::string localized(const std::string& key) = 0;
};

} // namespace join::platform
