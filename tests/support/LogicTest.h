#pragma once

#include "app/AppDelegate.h"
#include "base/Format.h"
#include "platform/NotificationCenter.h"
#include "platform/linux/documents/NlohmannJson.h"
#include "platform/linux/documents/PlistPropertyLists.h"
#include "session/JoinSessionDetails.h"
#include "session/ProcessSlots.h"
#include "support/FakeApplication.h"
#include "support/FakeFileManager.h"
#include "support/FakeLog.h"
#include "support/FakeTime.h"
#include "support/FakeWindows.h"
#include "support/FakeWorkspace.h"
#include "support/ScriptedHttpClient.h"

namespace join::test {

inline const std::string support = "/home/ann/Library/Application Support/TavoMeetingNative/";
inline const std::string logFolder = "/home/ann/Library/Logs/TavoFendel/Join/";
inline const std::string parameters = support + "joinparameters.conf";
inline const std::string joinDetails = support + "tavojoindetails.conf";
inline const std::string agent = support + "Tavo.app";
inline const std::string crashDetector = support + "TavoCrashDetector";
inline const std::string homeJoin = "/home/ann/Applications/Join.app";
inline const std::string header = "TAVO_MEETING_IND\n";

/// The delegate on fresh doubles and empty slots. Nothing is installed and no file exists; the program runs
/// from the system's Applications folder.
class LogicTest : public ::testing::Test {
protected:
    LogicTest();
    ~LogicTest() override;

    /// Runs the start-up, from empty slots, and forgets what it did.
    void prepared();

    /// What the operation logged, without its own name.
    Journal said(const std::string& method) const;

    /// Runs the loop and returns how often a download of the agent image, or of the Join image, has begun.
    auto agentDownloads() { return downloadsOf("/TavoMac.dmg"); }
    auto joinDownloads() { return downloadsOf("/join-session?"); }

    void installJoin(const std::string& version);
    void installAgent(const std::string& version);
    void installCrashDetector(const std::string& version);

    /// Expects a session check of this version at "host" for key 123456789, and answers it with a "meeting"
    /// of these members.
    void expectSessionCheck(const std::string& installedVersion, const std::string& members);

    long downloadsOf(const std::string& place);

    JoinSessionDetails& session() { return *JoinSessionDetails::getInstance(); }
    RecordingWindow& progressWindow() { return windows.loaded.at("TavoJoinWindow")->window(); }

    Journal journal;
    FakeApplication application{journal};
    FakeBundles bundles;
    FakeClock clock{journal};
    FakeFileManager files{journal};
    ScriptedHttpClient http{journal};
    platform::NlohmannJson json;
    FakeLog logSink{journal, files};
    FakeMainQueue mainQueue;
    platform::NotificationCenter notifications;
    FakePaths paths;
    platform::PlistPropertyLists propertyLists;
    FakeStrings strings;
    RecordingTasks tasks{journal};
    FakeTimers timers{journal};
    FakeUrlEvents urlEvents{journal};
    FakeWindows windows{journal};
    FakeWorkspace workspace{journal};
    AppDelegate delegate;
};

} // namespace join::test
