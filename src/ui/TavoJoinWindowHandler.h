#pragma once

#include "ui/WindowController.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace join {

/// Returns how much of a download has arrived, in words in which "%1" and "%2" stand for what has arrived and
/// for the whole in megabytes, rounded; without words if the whole rounds to none.
platform::ProgressValue downloadProgress(std::uint64_t received, std::uint64_t announced,
                                         std::string_view words);

/// The progress window: a spinning indicator and one line of text while the Join app checks, downloads and
/// installs. Both close() and the user's closing it end the program. Main thread only.
class TavoJoinWindowHandler final : public WindowController {
public:
    TavoJoinWindowHandler();

    /// Shows that the join is in progress. Does not bring the window to the screen.
    void showProgress();

    /// Shows that something is being downloaded and installed, which takes a while.
    void showInstallation();

    /// Shows how many bytes of how many have arrived of a download. Of several at a time, only the first one's
    /// are shown.
    void showDownload(const void* download, std::uint64_t received, std::uint64_t announced);

    /// The indicator turns again, if that download was shown.
    void endDownload(const void* download);

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
    const void* shownDownload_ = nullptr;
};

} // namespace join
