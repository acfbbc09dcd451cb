#pragma once

#include "ui/WindowController.h"

#include <string>

namespace join {

class TavoJoinWindowHandler;

/// The window in which the user types the session key and an e-mail address. Errors are shown in the fields
/// themselves. Main thread only.
class TavoJoinMainWindowHandler final : public WindowController {
public:
    /// The progress window is shown after a successful join; it must outlive this controller.
    explicit TavoJoinMainWindowHandler(TavoJoinWindowHandler& joinInfoWindow);

    /// Shows the window with a red prompt in its key field that asks for a valid key.
    void showWindowAskingForValidKey();

    /// Takes the window off the screen; the program continues.
    void close();

    /// The Join button: continues the join if both fields are filled and the web server accepts the key.
    void joinButtonAction();

    /// Asks the web server about a key; blocks until it has answered. Returns whether the key is valid.
    bool isKeyValid(const std::string& key);

private:
    void windowDidLoad() override;
    void joinWith(const std::string& key, const std::string& email);
    void cancelButtonAction();
    void setBusy(bool isBusy);

    platform::TextField& keyInputTextfield();
    platform::TextField& emailInputTextfield();

    TavoJoinWindowHandler& joinInfoWindow_;
};

} // namespace join
