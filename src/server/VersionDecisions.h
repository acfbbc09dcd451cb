#pragma once

#include "base/Text.h"

namespace join {

/// Decisions on versions. Versions are compared as texts: any different one is outdated. If no version is
/// announced, the installed one counts as current.

/// What to do after the check of the Join app.
enum class JoinAppStep {
    download,         ///< nothing is installed
    downloadInstead,  ///< delete the copies and download a new one
    goOn,             ///< continue with the Crash Detector and the agent
    waitForLaunchUrl, ///< there is nothing to do before a URL arrives
};

/// The local version is absent if nothing is installed.
inline JoinAppStep joinAppStep(const Text& local, const Text& announced, bool isLaunchedByUrl) {
    if (!local)
        return JoinAppStep::download;
    if (announced && announced != local)
        return JoinAppStep::downloadInstead;
    return isLaunchedByUrl ? JoinAppStep::goOn : JoinAppStep::waitForLaunchUrl;
}

/// Returns whether to replace an installed Crash Detector. One without a version is always replaced.
inline bool isCrashDetectorOutdated(const Text& local, const Text& announced) {
    return !local || (announced && announced != local);
}

} // namespace join
