#pragma once

#include "standins/StandIns.h"
#include "support/Child.h"
#include "support/TemporaryFolder.h"

#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace join::test {

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
        std::vector<std::string> command = {JOIN_SERVICE_PROGRAM, "--certificate",  certificate(),
                                            "--port-file",        folder_ / "port", "--log",
                                            folder_ / "requests"};
        command.insert(command.end(), serviceOptions.begin(), serviceOptions.end());
        service_ = std::make_unique<Child>(Launch{.command = command, .output = folder_ / "service-output"});
        if (!eventually([this] { return !contentsOf(folder_ / "port").empty(); }))
            throw std::runtime_error("the service has not started: " +
                                     contentsOf(folder_ / "service-output"));
        std::filesystem::create_directories(home());
        std::filesystem::create_directory(runtime());
        std::filesystem::permissions(runtime(), std::filesystem::perms::owner_all);
    }

    ~JoinWorld() { endAll(); }
    JoinWorld(const JoinWorld&) = delete;
    JoinWorld& operator=(const JoinWorld&) = delete;

    /// Kills everything started in this world that has outlived its starter.
    void endAll() const {
        for (const auto& process : std::filesystem::directory_iterator("/proc")) {
            const std::string number = process.path().filename();
            if (number.find_first_not_of("0123456789") == std::string::npos &&
                contentsOf(process.path() / "environ").find("HOME=" + home() + '\0') != std::string::npos)
                ::kill(std::stoi(number), SIGKILL);
        }
    }

    std::string home() const { return folder_ / "home"; }
    std::string runtime() const { return folder_ / "runtime"; }
    std::string support(const std::string& name) const {
        return home() + "/Library/Application Support/TavoMeetingNative/" + name;
    }
    std::string systemRoot() const { return home() + "/.local/share/tavojoin/root"; }
    std::string logFolder() const { return home() + "/Library/Logs/TavoFendel/Join"; }
    std::string certificate() const { return folder_ / "service.pem"; }

    std::string log() const { return contentsOf(logFolder() + "/join.log"); }
    bool logHolds(const std::string& text) const { return log().find(text) != std::string::npos; }
    std::string requests() const { return contentsOf(folder_ / "requests"); }
    std::string output() const { return contentsOf(folder_ / "join-output"); }
    std::string agentStarts() const { return contentsOf(home() + "/tavo-standin/agent.txt"); }
    std::string crashDetectorStarts() const { return contentsOf(home() + "/tavo-standin/crashdetector.txt"); }

    /// Host and port of the service.
    std::string host() const {
        std::string port = contentsOf(folder_ / "port");
        port.pop_back();
        return "localhost:" + port;
    }

    /// Installs the agent and the Crash Detector in the support folder, and Join in the Applications folder.
    void installPrograms() const {
        std::filesystem::create_directories(support(""));
        tools::makeAgentBundle(support("Tavo.app"), tools::defaultAgentVersion);
        tools::makeCrashDetector(support("TavoCrashDetector"), tools::defaultCrashDetectorVersion);
        copyJoinTo(systemRoot() + "/Applications");
    }

    static void copyJoinTo(const std::string& folder) {
        std::filesystem::create_directories(folder);
        std::filesystem::copy(JOIN_BUNDLE, folder + "/Join.app", std::filesystem::copy_options::recursive);
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
                                {"SSL_CERT_FILE", certificate()},
                                {"QT_QPA_PLATFORM", "offscreen"},
                                {"LC_ALL", "C.UTF-8"}},
                .output = folder_ / "join-output"};
    }

private:
    TemporaryFolder folder_;
    std::unique_ptr<Child> service_;
};

} // namespace join::test
