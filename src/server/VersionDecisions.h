#pragma once

#include "base/Text.h"

namespace join {

/// Decisions on versions, which are compared as texts: any other one is outdated. An announced version that
/// is absent counts as the one that is installed.

/// What the check of the Join app leads to.
enum class JoinAppStep {
    download,         ///< there is none
    downloadInstead,  ///< the copies go, a new one comes
    goOn,             ///< to the Crash Detector and the agent
    waitForLaunchUrl, ///< nothing to do before there is one
};

/// The local version is absent when nothing is installed.
inline JoinAppStep joinAppStep(const Text& local, const Text& announced, bool isLaunchedByUrl) {
    if (!local)
        return JoinAppStep::download;
    if (announced && announced != local)
        return JoinAppStep::downloadInstead;
    return isLaunchedByUrl ? JoinAppStep::goOn : JoinAppStep::waitForLaunchUrl;
}

/// Whether an installed Crash Detector goes, so that a new one comes. One that has no version does.
inline bool isCrashDetectorOutdated(const Text& local, const Text& announced) {
    return !local || (announced && announced != local);
}

} // namespace join
