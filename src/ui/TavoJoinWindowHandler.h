#pragma once

#include "ui/WindowController.h"

namespace join {

/// The progress window: a spinning indicator and one line of text while the Join app checks, downloads and
/// installs. Its two ways of going away for good end the program. Main thread only.
class TavoJoinWindowHandler final : public WindowController {
public:
    TavoJoinWindowHandler();

    /// The outlets, loaded when they are needed first.
    platform::Window& tavoJoinWindow();
    platform::Label& infoLabel();
    platform::ProgressIndicator& progress();

    /// Says again that a join goes on. The window is not shown by that.
    void showProgress();

    /// Says that the session could not be joined, and that nothing goes on any more.
    void showProblem();

    /// Takes the window off the screen, if it is there; the program goes on.
    void closeWindow();

    /// Takes the window off the screen and quits. Never returns to its caller.
    void close();

    /// The user closes the window: quits.
    bool windowShouldClose();

private:
    void windowDidLoad() override;

    bool isProblemShown_ = false;
};

} // namespace join
