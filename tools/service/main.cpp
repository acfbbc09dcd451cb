#include "service/Certificate.h"
#include "service/RequestLog.h"
#include "service/Scenario.h"
#include "service/Service.h"
#include "service/WholeFile.h"

#include <csignal>
#include <iostream>
#include <stdexcept>
#include <string_view>

namespace {

using join::tools::Certificate;
using join::tools::RequestLog;
using join::tools::Scenario;
using join::tools::Service;

/// Threads started after this leave the signals to the thread that waits for them.
sigset_t blockedEndSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

void writeIfWanted(const std::string& path, std::string_view text) {
    if (!path.empty())
        join::tools::writeWholeFile(path, text);
}

void serve(const Scenario& scenario) {
    const sigset_t endSignals = blockedEndSignals();
    const Certificate certificate;
    writeIfWanted(scenario.certificateFile, certificate.pem());

    RequestLog log(scenario.logFile);
    const Service service(scenario, certificate, log);
    writeIfWanted(scenario.portFile, std::to_string(service.port()) + '\n');
    std::cout << "listening on https://localhost:" << service.port() << std::endl;

    int signal = 0;
    ::sigwait(&endSignals, &signal);
}

} // namespace

int main(int argc, char** argv) {
    try {
        const Scenario scenario = join::tools::parseScenario({argv + 1, argv + argc});
        if (scenario.help)
            std::cout << join::tools::usage();
        else
            serve(scenario);
        return 0;
    } catch (const std::invalid_argument& wrongOption) {
        std::cerr << "join-service: " << wrongOption.what() << '\n';
        return 2;
    } catch (const std::exception& exception) {
        std::cerr << "join-service: " << exception.what() << '\n';
        return 1;
    }
}
