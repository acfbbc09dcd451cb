#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace join::platform {

/// A message, part of which may be a link. The link's place is given in bytes of the UTF-8 text.
struct MessageText {
    struct Link {
        std::size_t offset = 0;
        std::size_t length = 0;
        std::string address; ///< opened in the user's browser
    };
    std::string text;
    std::optional<Link> link;
};

/// Levels that keep a window above those of lower levels, as far as the desktop allows it.
inline constexpr int floatingWindowLevel = 3;
inline constexpr int statusWindowLevel = 25;

/// A text to read. Every character is shown as it is: there is no markup.
class Label {
public:
    virtual ~Label() = default;

    virtual void setStringValue(const std::string& text) = 0;

    /// Draws attention to the text: it takes the keyboard focus, so that a screen reader reads it out, and a
    /// window in the background asks for the user.
    virtual void announce() = 0;

    /// Shows a message, whose link is blue and works with mouse and keyboard.
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

    /// Sets a prompt that reports an error: in red, at 13 points.
    virtual void setErrorPlaceholder(const std::string& text) = 0;

    /// Takes the keyboard focus; a screen reader reads out the prompt.
    virtual void becomeFirstResponder() = 0;
};

class Button {
public:
    virtual ~Button() = default;

    virtual void setTitle(const std::string& title) = 0;

    /// Sets what a click or its keyboard equivalent does. A click while the action runs is lost.
    virtual void setAction(std::function<void()> action) = 0;
};

/// How far something has got: from 0 to 1, and in words.
struct ProgressValue {
    double part = 0;
    std::string text;
};

/// An indicator is seen only while it is animated.
class ProgressIndicator {
public:
    virtual ~ProgressIndicator() = default;

    virtual void startAnimation() = 0;
    virtual void stopAnimation() = 0;

    /// Fills the indicator that far; without a value, it turns. Pointers and screen readers find the words.
    virtual void setValue(const std::optional<ProgressValue>& value) = 0;
};

/// A window from an interface file, and its controls, the outlets, by name. It owns them all. Asking for an
/// outlet that the file does not contain, or contains as another kind of control, throws Exception. Main
/// thread only, like everything here.
class Window {
public:
    virtual ~Window() = default;

    virtual Label& label(const std::string& outlet) = 0;
    virtual TextField& textField(const std::string& outlet) = 0;
    virtual Button& button(const std::string& outlet) = 0;
    virtual ProgressIndicator& progressIndicator(const std::string& outlet) = 0;

    virtual void setLevel(int level) = 0;
    virtual void setTitle(const std::string& title) = 0;

    /// Makes the background white, and all that stands on it fit for it, in every desktop theme.
    virtual void setWhite() = 0;
    virtual void hideCloseButton() = 0;

    /// Sets what happens when the user closes the window, which may be while the logic waits.
    virtual void setCloseAction(std::function<void()> action) = 0;

    /// While a window is busy, its fields and its default button take no input, and the pointer says so.
    virtual void setBusy(bool isBusy) = 0;

    /// Draws what has changed, if the window is on the screen. It has been painted when this returns.
    virtual void display() = 0;

    /// Puts the window on the screen, in the middle of it, in front, with the keyboard focus. It has been
    /// painted when this returns.
    virtual void makeKeyAndOrderFront() = 0;

    /// Takes the window off the screen.
    virtual void orderOut() = 0;
    virtual bool isVisible() const = 0;
};

class Windows {
public:
    virtual ~Windows() = default;

    /// Loads a named interface file; its window is not on the screen yet. Throws Exception if there is no
    /// file of that name.
    virtual std::unique_ptr<Window> load(const std::string& name) = 0;
};

/// The application's strings table.
class Strings {
public:
    virtual ~Strings() = default;

    /// Returns the text of the key in the user's language, or the key itself if there is none.
    virtual std::string localized(const std::string& key) = 0;
};

} // namespace join::platform
