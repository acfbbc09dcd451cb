#include "ui/TavoJoinWindowHandler.h"

#include "base/Logging.h"

#include <algorithm>

namespace join {

platform::ProgressValue downloadProgress(std::uint64_t received, std::uint64_t announced,
                                         std::string_view words) {
    constexpr std::uint64_t megabyte = 1'000'000;
    const auto megabytes = [](std::uint64_t bytes) { return (bytes + megabyte / 2) / megabyte; };
    received = std::min(received, announced);
    platform::ProgressValue value{static_cast<double>(received) / static_cast<double>(announced), {}};
    if (megabytes(announced) == 0)
        return value;
    value.text = words;
    for (const auto& [place, bytes] : {std::pair("%1", received), std::pair("%2", announced)})
        if (const auto at = value.text.find(place); at != std::string::npos)
            value.text.replace(at, std::string_view(place).size(), std::to_string(megabytes(bytes)));
    return value;
}

TavoJoinWindowHandler::TavoJoinWindowHandler() : WindowController("TavoJoinWindow") {}

platform::ProgressIndicator& TavoJoinWindowHandler::progress() {
    return window().progressIndicator("progress");
}

platform::Label& TavoJoinWindowHandler::infoLabel() { return window().label("infoLabel"); }

void TavoJoinWindowHandler::windowDidLoad() {
    window().setLevel(platform::floatingWindowLevel);
    window().setCloseAction([this] { windowShouldClose(); });
    window().setWhite();
    window().setTitle(localized("JOIN"));
    showProgress();
}

void TavoJoinWindowHandler::showProgress() {
    if (isProgressShown_)
        return;
    isProgressShown_ = true;
    progress().startAnimation();
    infoLabel().setStringValue(localized("JOIN_PROGRESS"));
    window().display();
}

void TavoJoinWindowHandler::showInstallation() { infoLabel().setStringValue(localized("INSTALL_PROGRESS")); }

void TavoJoinWindowHandler::showDownload(const void* download, std::uint64_t received,
                                         std::uint64_t announced) {
    if (!shownDownload_)
        shownDownload_ = download;
    if (shownDownload_ == download)
        progress().setValue(downloadProgress(received, announced, localized("DOWNLOADED")));
}

void TavoJoinWindowHandler::endDownload(const void* download) {
    if (shownDownload_ != download)
        return;
    shownDownload_ = nullptr;
    progress().setValue(std::nullopt);
}

void TavoJoinWindowHandler::showProblem(const std::string& textKey) {
    infoLabel().setStringValue(localized(textKey));
    progress().stopAnimation();
    infoLabel().announce();
    isProgressShown_ = false;
}

void TavoJoinWindowHandler::closeWindow() {
    if (!isVisible())
        return;
    orderOut();
    log("%s : TavoJoinWindowHandler.closeWindow() called!", "-[TavoJoinWindowHandler closeWindow]");
}

void TavoJoinWindowHandler::close() {
    orderOut();
    log("%s : Agent invoked successfully", "-[TavoJoinWindowHandler close]");
    quit();
}

void TavoJoinWindowHandler::windowShouldClose() {
    orderOut();
    progress().stopAnimation();
    log("%s : Terminating tavo join", "-[TavoJoinWindowHandler windowShouldClose:]");
    quit();
}

} // namespace join
