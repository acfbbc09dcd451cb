#pragma once

#include "ui/WindowController.h"

#include <string>

namespace join {

/// The progress window: a spinning indicator and one line of text while the Join app checks, downloads and
/// installs. Both close() and the user's closing it end the program. Main thread only.
class TavoJoinWindowHandler final : public WindowController {
public:
    TavoJoinWindowHandler();

    /// Shows that the join is in progress. Does not bring the window to the screen.
    void showProgress();

    /// Shows that something is being downloaded and installed, which takes a while.
    void showInstallation();

    /// Shows why the session could not be joined, as the text with this key, and stops the indicator.
    void showProblem(const std::string& textKey = "PROBLEM_OCCURED");

    /// Takes the window off the screen, if it is there; the program continues.
    void closeWindow();

    /// Takes the window off the screen and quits. Never returns.
    void close();

private:
    void windowDidLoad() override;
    void windowShouldClose();

    platform::ProgressIndicator& progress();
    platform::Label& infoLabel();

    bool isProgressShown_ = false;
};

} // namespace join
