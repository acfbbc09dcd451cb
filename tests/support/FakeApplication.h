#pragma once

#include "platform/Application.h"
#include "platform/Paths.h"
#include "support/Journal.h"

#include <stdexcept>

namespace join::test {

/// Leaves the operation that ended the program. No handler in the logic catches it.
struct Terminated {};

class FakeApplication final : public platform::Application, Recorder {
public:
    using Recorder::Recorder;

    std::string bundle = "/Applications/Join.app";
    platform::SystemVersion version{11, 0};
    bool staysWhenItEnds = false;

    void run(platform::ApplicationDelegate& /*delegate*/) override { throw std::logic_error("no run loop"); }
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

} // namespace join::test
