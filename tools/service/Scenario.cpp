#include "service/Scenario.h"

#include "service/Printable.h"

#include <charconv>
#include <limits>
#include <map>
#include <stdexcept>

namespace join::tools {
namespace {

constexpr int longestDelay = 3'600'000;

int number(const std::string& text, int least, int most) {
    int value = 0;
    const char* end = text.data() + text.size();
    const auto [parsed, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc{} || parsed != end || value < least || value > most)
        throw std::invalid_argument("a number from " + std::to_string(least) + " to " + std::to_string(most) +
                                    " is needed");
    return value;
}

template <typename Choice>
Choice oneOf(const std::map<std::string_view, Choice>& choices, const std::string& text) {
    if (const auto found = choices.find(text); found != choices.end())
        return found->second;
    std::string names;
    for (const auto& [name, choice] : choices)
        names += (names.empty() ? "" : ", ") + std::string(name);
    throw std::invalid_argument("one of " + names + " is needed");
}

std::string notEmpty(const std::string& text) {
    if (text.empty())
        throw std::invalid_argument("a text is needed");
    return text;
}

const std::map<std::string_view, std::optional<bool>>& updateChoices() {
    static const std::map<std::string_view, std::optional<bool>> choices{
        {"true", true}, {"false", false}, {"absent", std::nullopt}};
    return choices;
}

const std::map<std::string_view, Broken>& brokenChoices() {
    static const std::map<std::string_view, Broken> choices{
        {"none", Broken::none},       {"html", Broken::html},   {"empty", Broken::empty},
        {"cut", Broken::cut},         {"deep", Broken::deep},   {"garbage", Broken::garbage},
        {"endless", Broken::endless}, {"reset", Broken::reset}, {"huge", Broken::huge},
        {"types", Broken::types}};
    return choices;
}

const std::map<std::string_view, ImageFault>& imageFaultChoices() {
    static const std::map<std::string_view, ImageFault> choices{
        {"status", ImageFault::status},   {"cut", ImageFault::cut},           {"stall", ImageFault::stall},
        {"reset", ImageFault::reset},     {"redirect", ImageFault::redirect}, {"html", ImageFault::html},
        {"garbage", ImageFault::garbage}, {"endless", ImageFault::endless}};
    return choices;
}

const std::map<std::string_view, LogMailAnswer>& logMailChoices() {
    using Answer = LogMailAnswer;
    static const std::map<std::string_view, Answer> choices{
        {"success", Answer::success}, {"line-feed", Answer::lineFeed},
        {"error", Answer::error},     {"empty", Answer::empty},
        {"reset", Answer::reset},     {"slow", Answer::slow},
        {"stall", Answer::stall},     {"cut", Answer::cut},
        {"garbage", Answer::garbage}, {"endless", Answer::endless}};
    return choices;
}

int countOrAll(const std::string& text) {
    constexpr int all = std::numeric_limits<int>::max();
    return text == "all" ? all : number(text, 0, all);
}

using Setter = void (*)(Scenario&, const std::string& value);

const std::map<std::string_view, Setter>& setters() {
    using S = Scenario;
    using Text = std::string;
    static const std::map<std::string_view, Setter> table{
        {"--port", [](S& s, const Text& value) { s.port = number(value, 0, 65535); }},
        {"--port-file", [](S& s, const Text& value) { s.portFile = notEmpty(value); }},
        {"--log", [](S& s, const Text& value) { s.logFile = notEmpty(value); }},
        {"--certificate", [](S& s, const Text& value) { s.certificateFile = notEmpty(value); }},
        {"--update-needed", [](S& s, const Text& value) { s.updateNeeded = oneOf(updateChoices(), value); }},
        {"--cdn-link", [](S& s, const Text& value) { s.cdnLink = value; }},
        {"--aws-server", [](S& s, const Text& value) { s.awsServer = value; }},
        {"--aws-url", [](S& s, const Text& value) { s.awsUrl = value; }},
        {"--valid-key", [](S& s, const Text& value) { s.validKeys.push_back(notEmpty(value)); }},
        {"--status", [](S& s, const Text& value) { s.status = number(value, 200, 599); }},
        {"--delay",
         [](S& s, const Text& value) {
             s.delay = std::chrono::milliseconds(number(value, 0, longestDelay));
         }},
        {"--answer", [](S& s, const Text& value) { s.answerFile = notEmpty(value); }},
        {"--broken", [](S& s, const Text& value) { s.broken = oneOf(brokenChoices(), value); }},
        {"--agent-image", [](S& s, const Text& value) { s.agentImage = notEmpty(value); }},
        {"--join-image", [](S& s, const Text& value) { s.joinImage = notEmpty(value); }},
        {"--image-fail", [](S& s, const Text& value) { s.failingImages = countOrAll(value); }},
        {"--image-fault", [](S& s, const Text& value) { s.imageFault = oneOf(imageFaultChoices(), value); }},
        {"--log-mail", [](S& s, const Text& value) { s.logMail = oneOf(logMailChoices(), value); }},
        {"--log-mail-folder", [](S& s, const Text& value) { s.logMailFolder = notEmpty(value); }},
    };
    return table;
}

} // namespace

Scenario parseScenario(const std::vector<std::string>& arguments) {
    Scenario scenario;
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        const std::string& option = *argument;
        if (option == "--help") {
            scenario.help = true;
            continue;
        }
        const auto setter = setters().find(option);
        if (setter == setters().end())
            throw std::invalid_argument("unknown option '" + printable(option) + "'");
        if (++argument == arguments.end())
            throw std::invalid_argument(option + ": a value is needed");
        try {
            setter->second(scenario, *argument);
        } catch (const std::invalid_argument& wrong) {
            throw std::invalid_argument(option + ": " + wrong.what() + ", not '" + printable(*argument) +
                                        "'");
        }
    }
    if (scenario.broken != Broken::none && !scenario.answerFile.empty())
        throw std::invalid_argument("--answer and --broken exclude each other");
    if (scenario.imageFault && !scenario.failingImages)
        throw std::invalid_argument("--image-fault needs --image-fail");
    return scenario;
}

std::string_view usage() {
    return R"(usage: join-service [OPTION VALUE]...

A stand-in for the web service: HTTPS on loopback, until SIGTERM or SIGINT.

  --port N              listen there; 0, the default: on any free port
  --port-file FILE      write the port's number there, once it listens
  --certificate FILE    write the certificate for clients to trust there (PEM)
  --log FILE            append a line for each request, as on standard output:
                        time, method, target, status, bytes of the body;
                        also the user agent for a disk image

Answers of the checks:
  --update-needed true|false|absent                    (default: false)
  --cdn-link HOST       --aws-server TEXT       --aws-url URL
                        each is left out unless it is given; a HOST
                        "self" is the service's own localhost:PORT
  --valid-key KEY       may be repeated; without it every key is valid
  --status N            200 to 599                     (default: 200)
  --delay MILLISECONDS  before each answer
  --answer FILE         answer with the bytes of that file
  --broken none|html|empty|cut|garbage|reset|endless|huge|deep|types

Disk images, each 404 without its option:
  --agent-image FILE    at /TavoMac.dmg and /agent/TavoMac.dmg
  --join-image FILE     at /join-session?key=KEY&role=agent&email=ADDRESS
  --image-fail N|all    how many of the first requests for an image fail
  --image-fault status|cut|stall|reset|redirect|html|garbage|endless
                        (default: status) 500; half of the body; half of the
                        body, then silence; no answer; a redirect to plain
                        HTTP; a web page; noise; chunks until the client goes

Log archives, at /api/v1/send_log_mail:
  --log-mail success|line-feed|error|empty|reset|slow|stall|cut|garbage|endless
                        (default: success) the word SUCCESS; with a line feed;
                        500 and a web page; no bytes; no answer; success after
                        three seconds; silence; half of the word; noise;
                        chunks until the client goes
  --log-mail-folder FOLDER
                        store the n-th there: n.zip, its attachment, if there
                        is one; n.txt, a line NAME=VALUE for each value
)";
}

} // namespace join::tools
