#pragma once

#include "platform/Application.h"
#include "platform/Bundles.h"
#include "platform/Exception.h"
#include "platform/Paths.h"
#include "platform/Tasks.h"
#include "platform/UrlEvents.h"
#include "platform/Workspace.h"
#include "support/Journal.h"

#include <functional>
#include <map>
#include <utility>

namespace join::test {

/// Leaves the operation that ended the program. No handler in the logic catches it.
struct Terminated {};

class FakeApplication final : public platform::Application, Recorder {
public:
    using Recorder::Recorder;

    std::string bundle = "/Applications/Join.app";
    platform::SystemVersion version{11, 0};
    bool staysWhenItEnds = false;

    void run(platform::ApplicationDelegate& /*delegate*/) override { throw Terminated(); }
    void terminate() override { end("terminate"); }
    void exitImmediately() override { end("exit"); }
    std::string bundlePath() override { return bundle; }
    std::string bundleIdentifier() override { return "com.tavo.join"; }
    platform::SystemVersion systemVersion() override { return version; }

private:
    void end(const char* how) {
        record(how);
        if (!staysWhenItEnds)
            throw Terminated();
    }
};

struct FakePaths final : platform::Paths {
    std::string home() override { return "/home/ann"; }
    std::string userLibrary() override { return "/home/ann/Library"; }
    std::string localApplications() override { return "/Applications"; }
    std::string temporary() override { return "/tmp/ann/"; }
};

/// Bundles by path, each just a version.
struct FakeBundles final : platform::Bundles {
    std::map<std::string, std::string> versions;
    bool failsOnce = false;

    std::optional<platform::Value> infoDictionary(const std::string& path) override {
        if (std::exchange(failsOnce, false))
            throw platform::Exception("unreadable");
        if (!versions.contains(path))
            return std::nullopt;
        return platform::Value{platform::Value::Dictionary{{"CFBundleShortVersionString", {versions[path]}}}};
    }
    std::string mainExecutable(const std::string& path) override {
        return versions.contains(path) ? path + "/main" : throw platform::Exception("no bundle at " + path);
    }
};

class FakeWorkspace final : public platform::Workspace, Recorder {
public:
    using Recorder::Recorder;

    std::string running; ///< the bundle identifier of the only application
    std::map<std::string, platform::FileSystemInfo> volumes;
    bool throws = false;

    bool launchApplication(const std::string& path, const std::vector<std::string>& arguments) override {
        record("launch " + path, arguments);
        if (throws)
            throw platform::Exception("no workspace");
        return false; // refused; the logic ignores that
    }
    std::vector<std::string> runningApplications(const std::string& bundleIdentifier) override {
        return std::vector<std::string>(running == bundleIdentifier ? 1 : 0, running);
    }
    std::vector<std::string> mountedLocalVolumePaths() override {
        std::vector<std::string> paths;
        for (const auto& [path, info] : volumes)
            paths.push_back(path);
        return paths;
    }
    platform::FileSystemInfo fileSystemInfo(const std::string& path) override { return volumes[path]; }
};

/// Starts nothing, and fails when told to. The test does what a program would do.
class RecordingTasks final : public platform::Tasks, Recorder {
public:
    using Recorder::Recorder;
    bool fails = false;
    std::function<int(const platform::Program&)> statusOf = [](const auto&) { return 0; };

    platform::TaskResult run(const platform::Program& program) override {
        note("run ", program);
        return {true, statusOf(program), "said by " + program.path};
    }
    void start(const platform::Program& program) override { note("start ", program); }

private:
    void note(const std::string& action, const platform::Program& program) {
        std::string entry = action + program.path + " in " + program.workingDirectory;
        if (program.patience != platform::Program().patience)
            entry += " for " + std::to_string(program.patience / std::chrono::seconds(1)) + " s";
        record(entry, program.arguments);
        if (fails)
            throw platform::Exception("cannot start " + program.path);
    }
};

class FakeUrlEvents final : public platform::UrlEvents, Recorder {
public:
    using Recorder::Recorder;
    std::function<void(const std::string& url)> deliver;

    void setDefaultHandler(const std::string& scheme, const std::string& bundleIdentifier) override {
        record("default handler of " + scheme + ": " + bundleIdentifier);
    }
    void setEventHandler(std::function<void(const std::string& url)> handler) override {
        record("URL handler");
        deliver = std::move(handler);
    }
};

} // namespace join::test
