#pragma once

#include "app/AppDelegate.h"
#include "base/Format.h"
#include "platform/NotificationCenter.h"
#include "platform/Services.h"
#include "platform/TrustPolicy.h"
#include "platform/linux/documents/NlohmannJson.h"
#include "platform/linux/documents/PlistPropertyLists.h"
#include "session/JoinSessionDetails.h"
#include "session/ProcessSlots.h"
#include "support/FakeFileManager.h"
#include "support/FakeTime.h"
#include "support/FakeWindows.h"
#include "support/FakeWorkspace.h"
#include "support/MachOImage.h"
#include "support/RecordingLog.h"
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
inline const std::string sessionEnd = "log: \n" + std::string(133, '-') + "\n";

/// Refuses one server.
struct FakePolicy final : platform::TrustPolicy {
    std::string refused = "evil";

    std::optional<std::string> reasonToRefuse(std::string_view server) const override {
        return server == refused ? std::optional(refused + " is refused") : std::nullopt;
    }
};

/// The delegate on fresh doubles and empty slots. Nothing is installed and no file exists; the program runs
/// from the system's Applications folder.
class LogicTest : public ::testing::Test {
protected:
    LogicTest() {
        platform::services() = {&application,   &bundles, &clock,     &files,         &http,
                                &json,          &logSink, &mainQueue, &notifications, &paths,
                                &propertyLists, &strings, &tasks,     &timers,        &policy,
                                &urlEvents,     &windows, &workspace};
        slots() = {};
    }
    ~LogicTest() override {
        slots() = {};
        platform::services() = {};
    }

    /// Runs the start-up, from empty slots, and forgets what it did.
    void prepared() {
        slots() = {};
        delegate = {};
        notifications = {};
        delegate.awakeFromNib();
        delegate.applicationWillFinishLaunching();
        journal.clear();
        logSink.lines.clear();
    }

    /// Does so too, and gives the session a host and a key.
    void preparedToJoin() {
        prepared();
        session().webServerName.set("host");
        session().key.set("123456789");
        notifications.addObserver(
            "SendJoinLog", [this](const Text& comment) { sentComments.push_back(comment.value_or("")); });
    }

    /// What the operation logged, without its own name.
    Journal said(const std::string& method) const {
        Journal messages;
        for (const std::string& line : logSink.lines)
            if (line.starts_with(method + " : "))
                messages.push_back(line.substr(method.size() + 3));
        return messages;
    }

    /// What the singletons and the log upload say about an exception.
    static std::string banner(const std::string& description) {
        return "************************ EXCEPTION ************************ \n Description :  " +
               description + " // Call Stack Symbol : ";
    }

    /// Runs the loop and returns how often a download of the agent image, or of the Join image, has begun.
    auto agentDownloads() { return downloadsOf("/TavoMac.dmg"); }
    auto joinDownloads() { return downloadsOf("/join-session?"); }

    /// Begins the download that is queued, and completes it.
    void finishDownload() {
        mainQueue.turn();
        auto& [request, downloader] = http.downloads.back();
        files.put(request.destination, "image");
        journal.clear();
        downloader->downloadDidBegin();
        downloader->downloadDidContinue(7);
        downloader->downloadDidReceive(42'000'000, 97'000'000);
        downloader->downloadDidFinish();
    }

    void installJoin(const std::string& version) {
        files.putFolder("/Applications/Join.app");
        bundles.versions["/Applications/Join.app"] = version;
    }
    void installAgent(const std::string& version) {
        files.put(agent + "/Contents/MacOS/Tavo", "program");
        bundles.versions[agent] = version;
    }
    void installCrashDetector(const std::string& version) {
        files.put(crashDetector, machImage(propertyList("CFBundleShortVersionString", version)));
    }

    long downloadsOf(const std::string& place) {
        mainQueue.turn();
        return std::ranges::count_if(journal, [&](const std::string& entry) {
            return entry.starts_with("download https://") && entry.find(place) != std::string::npos;
        });
    }

    JoinSessionDetails& session() { return *JoinSessionDetails::getInstance(); }
    FakeWindow& progressWindow() { return *windows.loaded.at("TavoJoinWindow"); }

    Journal journal;
    FakeApplication application{journal};
    FakeBundles bundles;
    FakeClock clock{journal};
    FakeFileManager files{journal};
    ScriptedHttpClient http{journal};
    platform::NlohmannJson json;
    RecordingLog logSink{&journal};
    FakeMainQueue mainQueue;
    platform::NotificationCenter notifications;
    FakePaths paths;
    platform::PlistPropertyLists propertyLists;
    FakeStrings strings;
    RecordingTasks tasks{journal};
    FakeTimers timers{journal};
    FakePolicy policy;
    FakeUrlEvents urlEvents{journal};
    FakeWindows windows{journal};
    FakeWorkspace workspace{journal};
    Journal sentComments; ///< with which the logs are sent, from preparedToJoin() on
    AppDelegate delegate;
};

} // namespace join::test
