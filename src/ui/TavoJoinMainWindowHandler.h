#pragma once

namespace join {

class TavoJoinWindowHandler;

/// The window in which a person types the session key and an e-mail address. Main thread only.
class TavoJoinMainWindowHandler {
public:
    /// The progress window is shown after a successful join; it outlives this controller.
    explicit TavoJoinMainWindowHandler(TavoJoinWindowHandler& joinInfoWindow);

    /// Brings the window to the front with the keyboard.
    void showWindow();

    /// Shows the window with the red prompt that asks for a valid key in its key field.
    void showWindowAskingForValidKey();

private:
    TavoJoinWindowHandler& joinInfoWindow_;
};

} // namespace join
