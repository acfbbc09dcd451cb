#include "service/Answers.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <random>
#include <utility>

namespace join::tools {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* json = "application/json";
constexpr const char* xml = "application/xml";
constexpr int nesting = 100'000;
constexpr int garbageSize = 4096;

std::string versionDocument(const Json& meeting) {
    const Json document = {{"response", {{"result", {{"meeting", meeting}}}}}};
    return document.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string keyDocument(std::string_view content) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<response><result><is-valid>" + std::string(content) +
           "</is-valid></result></response>\n";
}

std::string repeated(int count, std::string_view text) {
    std::string result;
    for (int i = 0; i < count; ++i)
        result += text;
    return result;
}

std::string nested(std::string_view opening, std::string_view closing) {
    return repeated(nesting, opening) + repeated(nesting, closing);
}

/// The same bytes every time.
std::string garbage() {
    std::mt19937 random; // NOLINT(cert-msc32-c,cert-msc51-cpp): a test is repeatable
    std::string bytes(garbageSize, '\0');
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random() & 0xFFU); });
    return bytes;
}

std::string wronglyTyped(bool isJson) {
    if (!isJson)
        return keyDocument("<is-valid><true/></is-valid>");
    return versionDocument({{"update_needed", {"true"}},
                            {"cdn_link", 7},
                            {"aws_server", {{"name", nullptr}}},
                            {"aws_server_download_url", true}});
}

} // namespace

Answer versionAnswer(const Scenario& scenario) {
    Json meeting = Json::object();
    if (scenario.updateNeeded)
        meeting["update_needed"] = *scenario.updateNeeded;
    if (scenario.cdnLink)
        meeting["cdn_link"] = *scenario.cdnLink;
    if (scenario.awsServer)
        meeting["aws_server"] = *scenario.awsServer;
    if (scenario.awsUrl)
        meeting["aws_server_download_url"] = *scenario.awsUrl;
    return {json, versionDocument(meeting)};
}

Answer keyAnswer(const Scenario& scenario, std::string_view key) {
    const auto& keys = scenario.validKeys;
    const bool valid = keys.empty() ? !key.empty() : std::find(keys.begin(), keys.end(), key) != keys.end();
    return {xml, keyDocument(valid ? "true" : "false")};
}

Answer spoilt(Answer answer, Broken broken) {
    const bool isJson = answer.contentType == json;
    switch (broken) {
    case Broken::html:
        return {"text/html", "<!DOCTYPE html>\n<html><head><title>Welcome</title></head>"
                             "<body><p>Please sign in to this network.</p></body></html>\n"};
    case Broken::empty:
        return {std::move(answer.contentType), {}};
    case Broken::garbage:
        return {std::move(answer.contentType), garbage()};
    case Broken::deep:
        return {std::move(answer.contentType), isJson ? nested("[", "]") : nested("<a>", "</a>")};
    case Broken::types:
        return {std::move(answer.contentType), wronglyTyped(isJson)};
    case Broken::none:
    case Broken::cut:
    case Broken::reset:
    case Broken::endless:
    case Broken::huge:
        break;
    }
    return answer;
}

} // namespace join::tools
