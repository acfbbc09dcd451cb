#include "service/Scenario.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

namespace {

using join::tools::Broken;
using join::tools::ImageFault;
using join::tools::LogMailAnswer;
using join::tools::parseScenario;
using join::tools::Scenario;
using Texts = std::vector<std::string>;

struct Accepted {
    Texts arguments;
    std::function<bool(const Scenario&)> holds;
};

TEST(Scenario, TakesItsOptions) {
    const std::vector<Accepted> cases{
        {{}, [](auto& s) { return s.port == 0 && s.status == 200 && !s.updateNeeded.value() && !s.cdnLink; }},
        {{"--port", "65535"}, [](auto& s) { return s.port == 65535; }},
        {{"--port-file", "p", "--log", "l", "--certificate", "c"},
         [](auto& s) { return s.portFile == "p" && s.logFile == "l" && s.certificateFile == "c"; }},
        {{"--update-needed", "true"}, [](auto& s) { return s.updateNeeded.value(); }},
        {{"--update-needed", "absent"}, [](auto& s) { return !s.updateNeeded.has_value(); }},
        {{"--cdn-link", "", "--aws-server", "--port", "--aws-url", "u"},
         [](auto& s) { return s.cdnLink == "" && s.awsServer == "--port" && s.awsUrl == "u"; }},
        {{"--valid-key", "1", "--valid-key", "2"}, [](auto& s) { return s.validKeys.back() == "2"; }},
        {{"--status", "404", "--status", "503"}, [](auto& s) { return s.status == 503; }},
        {{"--delay", "1500"}, [](auto& s) { return s.delay == std::chrono::milliseconds(1500); }},
        {{"--answer", "file", "--broken", "none"}, [](auto& s) { return s.answerFile == "file"; }},
        {{"--broken", "endless"}, [](auto& s) { return s.broken == Broken::endless; }},
        {{"--agent-image", "a", "--join-image", "j"},
         [](auto& s) { return s.agentImage == "a" && s.joinImage == "j" && !s.failingImages; }},
        {{"--image-fault", "stall", "--image-fail", "2"},
         [](auto& s) { return s.imageFault == ImageFault::stall && s.failingImages == 2; }},
        {{"--image-fail", "all"}, [](auto& s) { return s.failingImages > 1'000'000; }},
        {{"--log-mail", "line-feed", "--log-mail-folder", "f"},
         [](auto& s) { return s.logMail == LogMailAnswer::lineFeed && s.logMailFolder == "f"; }},
    };
    for (const Accepted& accepted : cases)
        EXPECT_TRUE(accepted.holds(parseScenario(accepted.arguments)))
            << testing::PrintToString(accepted.arguments);
}

TEST(Scenario, RefusesAWrongCommandLineInOneLine) {
    const std::vector<Texts> cases{
        {"--unknown", "1"},
        {"8443"},
        {""},
        {"--new\nline"},
        {"--port"},
        {"--port", "65536"},
        {"--port", "-1"},
        {"--port", "8443x"},
        {"--port", " 8443"},
        {"--port", "99999999999999999999"},
        {"--status", "199"},
        {"--status", "600"},
        {"--delay", ""},
        {"--delay", "1\n"},
        {"--broken", "NONE"},
        {"--update-needed", "yes"},
        {"--valid-key", ""},
        {"--log", ""},
        {"--help", "--wrong"},
        {"--agent-image", ""},
        {"--join-image"},
        {"--image-fail", "-1"},
        {"--image-fail", "ALL"},
        {"--image-fail", "1", "--image-fault", "none"},
        {"--image-fault", "cut"},
        {"--log-mail", "SUCCESS"},
        {"--log-mail-folder", ""},
        {"--answer", "file", "--broken", "html"},
    };
    for (const Texts& arguments : cases) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        try {
            parseScenario(arguments);
            ADD_FAILURE() << "accepted";
        } catch (const std::invalid_argument& refusal) {
            const std::string text = refusal.what();
            EXPECT_TRUE(!text.empty() && text.find('\n') == std::string::npos) << text;
        }
    }
}

} // namespace
