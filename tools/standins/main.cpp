#include "standins/StandIns.h"

#include <exception>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

namespace {

struct Options {
    std::filesystem::path folder;
    std::string agentVersion{join::tools::defaultAgentVersion};
    std::string crashDetectorVersion{join::tools::defaultCrashDetectorVersion};
};

std::optional<Options> parse(const std::vector<std::string>& arguments) {
    if (arguments.size() % 2 == 0 || arguments[0].empty() || arguments[0][0] == '-')
        return std::nullopt;
    Options options{.folder = arguments[0]};
    for (std::size_t i = 1; i < arguments.size(); i += 2) {
        if (arguments[i] == "--agent-version")
            options.agentVersion = arguments[i + 1];
        else if (arguments[i] == "--crash-detector-version")
            options.crashDetectorVersion = arguments[i + 1];
        else
            return std::nullopt;
    }
    return options;
}

} // namespace

int main(int argc, char** argv) {
    try {
        const std::optional<Options> options = parse({argv + 1, argv + argc});
        if (!options) {
            std::cerr << "usage: make-standins DIR [--agent-version V] [--crash-detector-version V]\n";
            return 2;
        }
        std::filesystem::create_directories(options->folder);
        join::tools::makeAgentBundle(options->folder / "Tavo.app", options->agentVersion);
        join::tools::makeCrashDetector(options->folder / "TavoCrashDetector", options->crashDetectorVersion);
        return 0;
    } catch (const std::exception& exception) {
        std::cerr << "make-standins: " << exception.what() << '\n';
        return 1;
    }
}
