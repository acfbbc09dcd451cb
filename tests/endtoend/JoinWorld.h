#pragma once

#include "standins/StandIns.h"
#include "support/Child.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace join::test {

namespace fs = std::filesystem;

inline int statusOf(const Launch& launch) { return Child(launch).wait(); }

/// How often the piece occurs.
inline long count(const std::string& text, const std::string& piece) {
    long found = 0;
    for (std::size_t at = 0; (at = text.find(piece, at)) != std::string::npos; at += piece.size())
        ++found;
    return found;
}

/// A process that may have ended but has not been waited for counts as gone.
inline bool isAlive(pid_t process) {
    const std::string status = contentsOf("/proc/" + std::to_string(process) + "/stat");
    return !status.empty() && status.substr(status.rfind(')') + 2, 1) != "Z";
}

/// Everything that one test needs for a join: a home folder, a web service on loopback and the built program.
class JoinWorld {
public:
    /// The options of the service, except those for its address.
    explicit JoinWorld(std::vector<std::string> serviceOptions = {}) {
        std::vector<std::string> command = {JOIN_SERVICE_PROGRAM, "--certificate",  folder_ / "service.pem",
                                            "--port-file",        folder_ / "port", "--log",
                                            folder_ / "requests"};
        command.insert(command.end(), serviceOptions.begin(), serviceOptions.end());
        service_ = std::make_unique<Child>(Launch{.command = command, .output = folder_ / "service-output"});
        if (!eventually([this] { return !contentsOf(folder_ / "port").empty(); }))
            throw std::runtime_error("the service has not started: " +
                                     contentsOf(folder_ / "service-output"));
        fs::create_directories(home());
        fs::create_directory(runtime());
        fs::permissions(runtime(), fs::perms::owner_all);
    }

    ~JoinWorld() {
        for (const fs::path& process : processes())
            ::kill(std::stoi(process.filename()), SIGKILL);
    }

    /// The processes started in this world, with those that have outlived their starter, as folders of /proc.
    std::vector<fs::path> processes() const {
        std::vector<fs::path> found;
        for (const auto& process : fs::directory_iterator("/proc"))
            if (contentsOf(process.path() / "environ").find("HOME=" + home() + '\0') != std::string::npos)
                found.push_back(process.path());
        return found;
    }

    /// What every user of the computer can read of them.
    std::string commandLines() const {
        std::string lines;
        for (const fs::path& process : processes())
            lines += contentsOf(process / "cmdline");
        return lines;
    }

    std::string home() const { return folder_ / "home"; }
    std::string runtime() const { return folder_ / "runtime"; }
    std::string support(const std::string& name) const {
        return home() + "/Library/Application Support/TavoMeetingNative/" + name;
    }
    std::string systemRoot() const { return home() + "/.local/share/tavojoin/root"; }

    std::string log() const { return contentsOf(home() + "/Library/Logs/TavoFendel/Join/join.log"); }
    bool logHolds(const std::string& text) const { return log().find(text) != std::string::npos; }
    std::string requests() const { return contentsOf(folder_ / "requests"); }
    std::string output() const { return contentsOf(folder_ / "join-output"); }
    std::string agentStarts() const { return contentsOf(home() + "/tavo-standin/agent.txt"); }
    std::string crashDetectorStarts() const { return contentsOf(home() + "/tavo-standin/crashdetector.txt"); }

    /// Whether the log comes to hold the text.
    testing::AssertionResult logs(const std::string& text) const {
        return testing::AssertionResult(eventually([&] { return logHolds(text); }))
               << "not logged: " << text << '\n'
               << log() << output();
    }

    /// Whether the agent is started, and with all of its arguments.
    testing::AssertionResult agentRuns() const {
        return testing::AssertionResult(eventually([&] { return agentStarts().ends_with("end\n"); }))
               << log() << output();
    }

    /// Host and port of the service.
    std::string host() const {
        std::string port = contentsOf(folder_ / "port");
        port.pop_back();
        return "localhost:" + port;
    }

    /// A URL that joins a session of the service.
    std::string url(const std::string& more = "&cav=1.4") const {
        return "tavojoin://k=123456789&e=ann@example.org&wsn=" + host() + more;
    }

    /// Installs the agent and the Crash Detector in the support folder, and Join in the Applications folder.
    void installPrograms() const {
        fs::create_directories(support(""));
        tools::makeAgentBundle(support("Tavo.app"), tools::defaultAgentVersion);
        tools::makeCrashDetector(support("TavoCrashDetector"), tools::defaultCrashDetectorVersion);
        copyJoinTo(systemRoot() + "/Applications");
    }

    static void copyJoinTo(const std::string& folder) {
        fs::create_directories(folder);
        fs::copy(JOIN_BUNDLE, folder + "/Join.app", fs::copy_options::recursive);
    }

    /// Whether both copies that Join makes of itself can be started.
    bool isJoinInstalled() const {
        const std::string program = "/Applications/Join.app/Contents/MacOS/Join";
        return ::access((systemRoot() + program).c_str(), X_OK) +
                   ::access((home() + program).c_str(), X_OK) ==
               0;
    }

    /// The status of another program in this world.
    int run(std::vector<std::string> command) const {
        Launch launch = this->launch({});
        launch.command = std::move(command);
        return statusOf(launch);
    }

    /// How to start the program in this world.
    Launch launch(std::vector<std::string> arguments, const std::string& bundle = JOIN_BUNDLE) const {
        arguments.insert(arguments.begin(), bundle + "/Contents/MacOS/Join");
        return {.command = std::move(arguments),
                .environment = {{"HOME", home()},
                                {"XDG_DATA_HOME", home() + "/.local/share"},
                                {"XDG_CACHE_HOME", home() + "/.cache"},
                                {"XDG_CONFIG_HOME", home() + "/.config"},
                                {"XDG_RUNTIME_DIR", runtime()},
                                {"SSL_CERT_FILE", folder_ / "service.pem"},
                                {"QT_QPA_PLATFORM", "offscreen"},
                                {"LC_ALL", "C.UTF-8"}},
                .output = folder_ / "join-output"};
    }

private:
    TemporaryFolder folder_;
    std::unique_ptr<Child> service_;
};

/// The options of a service that delivers the images.
inline std::vector<std::string> delivering(std::vector<std::string> more = {}) {
    more.insert(more.end(), {"--agent-image", std::string(JOIN_IMAGES) + "/TavoMac.dmg", "--join-image",
                             std::string(JOIN_IMAGES) + "/JoinMac.dmg"});
    return more;
}

} // namespace join::test
