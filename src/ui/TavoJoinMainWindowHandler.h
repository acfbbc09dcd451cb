#pragma once

#include "ui/WindowController.h"

#include <string>

namespace join {

class TavoJoinWindowHandler;

/// The window in which a person types the session key and an e-mail address. What is wrong with them is said
/// in the fields themselves. Main thread only.
class TavoJoinMainWindowHandler final : public WindowController {
public:
    /// The progress window is shown after a successful join; it outlives this controller.
    explicit TavoJoinMainWindowHandler(TavoJoinWindowHandler& joinInfoWindow);

    /// Shows the window with the red prompt that asks for a valid key in its key field.
    void showWindowAskingForValidKey();

    /// Takes the window off the screen; the program goes on.
    void close();

    /// The Join button: goes on with the join when both fields are filled and the web server accepts the key.
    void joinButtonAction();

    /// The Cancel button: quits.
    void cancelButtonAction();

    /// Asks the web server about a key; blocks until it has answered.
    bool isKeyValid(const std::string& key);

private:
    void windowDidLoad() override;
    void joinWith(const std::string& key, const std::string& email);

    platform::TextField& keyInputTextfield();
    platform::TextField& emailInputTextfield();
    void showError(platform::TextField& field, const std::string& textKey);

    TavoJoinWindowHandler& joinInfoWindow_;
    platform::TextAttributes errorTxtDict_; ///< of the red prompts
};

} // namespace join
