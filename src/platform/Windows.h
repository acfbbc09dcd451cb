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

/// How a text is drawn: in the system's font at that size.
struct TextAttributes {
    Color color;
    int pointSize = 0;
};

/// A message in which a part may be a link. The link is given in bytes of the UTF-8 text.
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

    /// Draws what has changed, if the window is on the screen. It has been painted when this returns.
    virtual void display() = 0;

    /// Puts the window on the screen, in front, with the keyboard. It has been painted when this returns.
    virtual void makeKeyAndOrderFront() = 0;

    /// Takes the window off the screen.
    virtual void orderOut() = 0;
    virtual bool isVisible() const = 0;
};

/// A text to be read. Whatever text it is given it shows as the characters it is.
class Label {
public:
    virtual ~Label() = default;

    virtual void setStringValue(const std::string& text) = 0;
    virtual void setTextColor(Color color) = 0;

    /// Shows a message, whose link works by mouse and by keyboard.
    virtual void setMessage(const MessageText& message) = 0;
};

/// A line to be typed into.
class TextField {
public:
    virtual ~TextField() = default;

    virtual void setStringValue(const std::string& text) = 0;

    /// The text that stands in it, line breaks as blanks.
    virtual std::string stringValue() const = 0;

    /// The prompt that is shown while it is empty.
    virtual void setPlaceholder(const std::string& text) = 0;
    virtual void setAttributedPlaceholder(const std::string& text, const TextAttributes& attributes) = 0;

    /// Takes the keyboard.
    virtual void becomeFirstResponder() = 0;
};

class Button {
public:
    virtual ~Button() = default;

    virtual void setTitle(const std::string& title) = 0;
    virtual void setEnabled(bool enabled) = 0;

    /// What a click, or the key that stands for it, does. One that comes while it is being done is lost.
    virtual void setAction(std::function<void()> action) = 0;
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
    virtual Label& label(const std::string& outlet) = 0;
    virtual TextField& textField(const std::string& outlet) = 0;
    virtual Button& button(const std::string& outlet) = 0;
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
